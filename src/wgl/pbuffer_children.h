// The child pbuffers behind an application pbuffer. On the thread that calls the wgl function.
#pragma once

#include "dispatch/thread_state.h"

// Makes one child pbuffer per part, each on a hidden window of the pbuffer's size, and enters the record. Arguments as
// the application gave them. Result: 1, also when the pbuffer has a record already or the registry is full; 0 when a
// child could not be made, which a message box has shown. What was made by then stays.
u32 __osw_pbuffer_register(__osw_thread_state* state, HPBUFFERARB hpbuffer, HDC hdc, i32 format, i32 width, i32 height,
                           const int* attributes);

// Waits until the thread's workers have finished, destroys the child pbuffers and their windows and frees the record.
// Result: always 1.
u32 __osw_pbuffer_unregister(__osw_thread_state* state, HPBUFFERARB hpbuffer);
