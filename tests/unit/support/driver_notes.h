// What the sources of the recording driver share.
#pragma once

#include <set>

#include "support/recording_driver.h"

namespace driver {

constexpr int context_limit = 4096;

struct context_record {
  bool live = false;
  std::atomic<DWORD> made_by{0};  // other threads look for their own contexts meanwhile
  HDC made_on = nullptr;
  int made_with = 0;
  int pixel_format = 0;
  std::atomic<DWORD> current_on{0};
  // Of the thread that has the context current or has switched to it.
  u64 gl_calls = 0;
  u64 digest = empty_digest;
  // Of objects, under a lock.
  std::set<GLuint> names;
  GLuint last_name = 0;    // none up to it is free
  GLuint below_names = 0;  // none up to it ever will be
};

// The calling thread's binding, as numbers of contexts; -1 for none.
struct thread_binding {
  int context = -1;
  int switched_to = -1;
  HDC draw = nullptr;
  HDC read = nullptr;
};
extern thread_local thread_binding bound;

HGLRC handle_of(int context);
int number_of_context(HGLRC handle);
context_record& record_of(int context);

// The result of a wgl op, after its effect on the simulated contexts and drawables.
u64 perform(int op, const u64* arguments);

// The entry of a name by wglGetProcAddress; null unless a context is current.
FARPROC entry_by_name(const char* name);

// Makes the names that a GL call asks for, or deletes them, while names are handed out. `result` is that of a call
// which returns one.
void perform_on_names(context_record* context, int op, const u64* arguments, u32 count, u64* result);

void reset_names();
void reset_contexts();
void reset_digests();

}  // namespace driver
