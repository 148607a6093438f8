// Why the issuing thread had to wait, op by op. Counting always runs; printing is off unless a build switches it on.
#pragma once

#include "dispatch/thread_state.h"

// Not 0: `__osw_print_sync_info` prints.
extern u32 __osw_print_sync_info_enabled;

// Not 0: the swap handlers print after every frame.
extern u32 __osw_print_sync_on_swap;

// Sends the figures of the state's present binding to the debugger. Nothing without a queue. On the state's own thread,
// or at process detach.
void __osw_print_sync_info(const __osw_thread_state* state);

// Sets the figures of a binding back to 0.
void __osw_reset_sync_info(__osw_thread_state* state);
