// The threads that serve one issuing thread: a worker per part, which replays every command on that part's child
// context, and a swap thread, which exchanges the two lists when everyone is ready.
#pragma once

#include "pipeline/cmd_queue.h"

// Start argument of a worker or a swap thread, on the heap.
struct __osw_worker_arg {
  HANDLE app_thread;  // what the issuing thread got from GetCurrentThread; nobody reads it
  i32 part;           // of a worker; 0 for the swap thread
  __osw_thread_state* state;
};

constexpr int max_worker_args = 1024;

// Arguments of the threads that run, so that process detach can free those of threads that never ended. Free slots are
// null. Under `__osw_worker_arg_lock`, which is made and deleted with the process.
extern __osw_worker_arg* __osw_worker_arg_list[max_worker_args];
extern CRITICAL_SECTION __osw_worker_arg_lock;

// Starts the calling thread's workers and its swap thread, and stores their `__osw_thread_ctrl` in the second TLS slot.
// `app_thread` is the caller's GetCurrentThread. Result: 1, also when the threads run already or when only the memory
// for the `__osw_thread_ctrl` was missing; 0 when a thread could not be made, which a message box has shown by then:
// what was started stays, and the next call starts what is missing.
u32 __osw_start_threads(HANDLE app_thread);

// Whether commands pushed on this thread will be replayed: it has a queue and all its threads.
inline bool __osw_has_pipeline(const __osw_thread_state* state) {
  return state->cmd_queue && state->started.swap_thread;
}

// Ends the threads of a state that is about to be destroyed, on its own thread or when that one will not use it again.
// Threads that the system has ended already are not waited for. The others give the queue back by themselves.
void __osw_end_threads(__osw_thread_state* state);

DWORD WINAPI __osw_worker_main(void* start);
DWORD WINAPI __osw_swap_main(void* start);

// Gives back what threads that the system has ended held of their queues, and frees their arguments. At the end of the
// process, with no other thread left.
void __osw_release_for_ended_threads();

// Enters `arg` in the list; a full list leaves it out, and its memory is then never freed.
void __osw_register_worker_arg(__osw_worker_arg* arg);

// Takes `arg` out of the list and frees it; one that is not listed is left alone.
void __osw_unregister_worker_arg(__osw_worker_arg* arg);
