// The child contexts behind an application context: made, copied and deleted together with it. On the thread that calls
// the wgl function.
#pragma once

#include "dispatch/thread_state.h"

// Makes one child context per part for `hglrc`, which was made on `hdc`, and enters the record. Result: 1, also when
// the context has a record already or the registry is full; 0 when a child could not be made, which a message box has
// shown. What was made by then stays.
u32 __osw_glrc_register(__osw_thread_state* state, HDC hdc, HGLRC hglrc);

// Waits until the thread's workers have finished, deletes the child contexts and frees the record. Result: always 1.
u32 __osw_glrc_unregister(__osw_thread_state* state, HGLRC hglrc);

// Copies the state named by `mask` between the children of two contexts. Nothing when one of them has no record.
void __osw_glrc_copy(__osw_thread_state* state, HGLRC source, HGLRC destination, UINT mask);

// Tells the workers of every share that was made while no thread had workers. On a thread with a pipeline.
void __osw_push_remembered_shares(__osw_thread_state* state);

// Carries out the shares that are still remembered, when `hglrc` (may be null) is of one of them: a context that shares
// with another already cannot be given a third one's lists. By the thread's workers, or here when it has none.
void settle_shares(__osw_thread_state* state, HGLRC hglrc);
