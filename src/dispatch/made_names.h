// Names that GL makes for objects. The program knows one name of each, by which every part has to know the object too.
#pragma once

#include "ops/types.h"

// Looks whether a part has made the `count` names that the program got. Where it has not, this is reported with the
// name of `function`, once in the process: what the program does with these objects goes wrong on that part. Any
// thread, no lock needed.
void compare_names(const char* function, i32 part, const GLuint* got, const GLuint* made, GLsizei count);

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

// Gives the program the last part's names, if GL has made any, and compares those of the others with them. Frees the
// room. Any thread.
void give_names(names_of_parts* names, const char* function, GLuint* program);
