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

// The same for a thread that ends, which has the loader lock: another thread that is binding may be waiting for that
// one within the lock of the binding, and then nothing is done.
void bind_wgl_unless_busy(i32 first_use);

// Looks an op's entry up when no other thread is filling `__osw_sys_wgl`, whose address is `table`: seen outside of the
// lock, the next binding may have emptied it again. Result: the entry, or null when the system has none. Any thread,
// without the lock.
__osw_proc await_wgl_entry(const __osw_proc* table, int op);

// Whether a thread of this process has ever called the library. A process that has not loads nothing, and calls nobody,
// when its threads and it itself come to their ends. Any thread.
bool is_library_in_use();

// Fills `__osw_sys_gl`, once. The calling thread has a context current. Failures as above.
void __osw_bind_gl();

// Gives an op its entry when the first context's driver had none: `entry` is what the system says under the context
// that is current now. Nothing before the table is complete. Any thread, no lock needed.
void bind_missing_wgl(int op, __osw_proc entry);
void bind_missing_gl(int op, __osw_proc entry);
