// One part's share of a framebuffer read.
#pragma once

#include "dispatch/thread_state.h"

// Reads the share of one part into the application's whole image `pixels`, whose rectangle (x, y, width, height) is in
// GL's window coordinates of the application's window. The part's context is current on the calling thread: its worker,
// or the application's thread after a switch. Pixels that the part does not show are left as they are, and the pack
// state is as before afterwards.
void __osw_read_pixels_part(__osw_thread_state* state, i32 part, i32 x, i32 y, i32 width, i32 height, u32 format,
                            u32 type, void* pixels);
