// The changes of a thread's mode. Only make-current handlers make them, on the thread that owns the state.
#pragma once

#include "dispatch/thread_state.h"

// Completes the system's tables now that a context is current on the calling thread, and points the state at them.
void __osw_bind_system(__osw_thread_state* state);

// Each sets `mode`, `gl_table`, `path`, `has_context` and `seq_path` together.
void __osw_enter_no_context(__osw_thread_state* state);
void __osw_enter_sequential(__osw_thread_state* state);
void __osw_enter_threaded(__osw_thread_state* state);
void __osw_enter_pass_through(__osw_thread_state* state);
