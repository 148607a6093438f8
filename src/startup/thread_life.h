// The end of a thread.
#pragma once

#include "dispatch/thread_state.h"

// Destroys a thread's state: prints its statistics and gives its queue back, with which the queue and the state are
// freed once nobody uses the queue any more. Null is passed over. Result: always 1. On the state's own thread, or at
// process detach.
u32 __osw_destroy_thread_state(__osw_thread_state* state);

// Ends the workers and the swap thread of a state, unless the end of the process has, and destroys it. On the state's
// own thread, or at process detach.
void __osw_end_thread_state(__osw_thread_state* state);

// Cleans up after the calling thread: ends its workers and its swap thread and destroys its state. The thread may call
// the library once more afterwards, from a destructor of the program's, and finds the shared state then.
void __osw_detach_thread();
