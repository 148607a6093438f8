// The end of a thread.
#pragma once

#include "dispatch/thread_state.h"

// What becomes of a state whose threads have been told to end.
enum class state_users {
  leaving,  // its threads give the queue back by themselves: the last one frees it
  gone,     // the system has ended them
};

// Destroys a thread's state: prints its statistics and frees its queue and itself. Null is passed over. Result:
// always 1. On the state's own thread, or at process detach.
u32 __osw_destroy_thread_state(__osw_thread_state* state, state_users users);

// Cleans up after the calling thread: ends its workers and its swap thread and destroys its state.
void __osw_detach_thread();
