// Binding of the system's OpenGL library, `opengl32sys.dll`, into `__osw_sys_wgl` and `__osw_sys_gl`.
#pragma once

#include "ops/tables.h"

// One lock per table. They are never held together. Made and deleted with the process.
extern CRITICAL_SECTION __osw_wgl_bind_lock;
extern CRITICAL_SECTION __osw_gl_bind_lock;

// Set at the end of a binding that had a context, under the lock, and never cleared: a thread that sees it set takes
// the table as complete.
extern u32 __osw_wgl_bound_done;
extern u32 __osw_gl_bound_done;

// Fills `__osw_sys_wgl`. `first_use` is 1 for a new thread state, where extension entries are expected to be missing:
// the binding then says nothing of them and is made again by the next caller; 0 for a thread whose context has just
// become current, which completes the table for good. Failures are reported to the debugger and leave slots null. Any
// thread.
void __osw_bind_wgl(i32 first_use);

// Fills `__osw_sys_gl`, once. The calling thread has a context current. Failures as above.
void __osw_bind_gl();
