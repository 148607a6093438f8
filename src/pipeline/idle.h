// Keeps the last frame from staying unseen. A swap travels in the list until the next hand-over; a program that has
// drawn and then waits for input would never bring one about.
#pragma once

#include "dispatch/thread_state.h"

// Called on the threaded path after a swap, glFlush or glFinish. Arms a timer of the calling thread, unless one is
// pending; the thread's own message loop runs it once the program is idle, and it hands the list over. A thread without
// a message loop is left as it is.
void __osw_arm_idle_timer(__osw_thread_state* state);

// Takes a pending timer back. On the thread that owns the state.
void __osw_disarm_idle_timer(__osw_thread_state* state);
