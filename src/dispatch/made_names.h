// Names that GL makes for objects. The program knows one name of each, by which every part has to know the object too.
#pragma once

#include "ops/types.h"

// How a part makes more names of the kind that a call has made, on the calling thread, which has the part's context
// current.
struct name_calls {
  const void* on;
  void (*make)(const void* on, GLsizei count, GLuint* made);
  void (*remove)(const void* on, GLsizei count, const GLuint* names);  // null where nobody can
  GLsizei most;  // how many may be made more at once to come by one that is lacking; below 2048
};

// Makes a part's names those that the program got, wherever they differ: another thread of one share group may have
// made names meanwhile, and the part met the two in the other order. What the part has made too much is deleted, and
// more is made until all of the program's names are there. Those that another thread of the part holds are waited for,
// a tenth of a second in all. `made` is `got` afterwards; else this is reported with the name of `function`, once in
// the process, what the program does with these objects goes wrong on that part, and no later call is mended.
void match_names(const name_calls& calls, const char* function, i32 part, const GLuint* got, GLuint* made,
                 GLsizei count);

// Made and deleted with a process of the extended mode.
void make_names_lock();
void delete_names_lock();

// Where the parts put their names when no other context makes those of the program: `count` for each part, in order.
struct names_of_parts {
  GLsizei count = 0;
  i32 parts = 0;
  GLuint* of_part = nullptr;  // null without memory; all 0 at first, which is no name
  GLuint few[64] = {};
};

// Makes room in `names`, which is fresh. Result: whether there is; if not, that is reported with the name of
// `function`.
bool open_names(names_of_parts* names, GLsizei count, i32 parts, const char* function);

GLuint* names_of(const names_of_parts& names, i32 part);

// The last part's names, which the program gets; null if GL has made none.
const GLuint* names_for_program(const names_of_parts& names);

// Gives the program its names, if there are any, and reports those of other parts that differ, as above. Frees the
// room. Any thread.
void give_names(names_of_parts* names, const char* function, GLuint* program);
