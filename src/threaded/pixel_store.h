// The mirror of the pixel store state that the captures read.
#pragma once

#include "wgl/records/glrc.h"

// Writes the field of the pack or unpack mirror that `pname` names. An unknown pname, and a value that GL refuses,
// which leaves its state as it was, write nothing. On the thread that has the context current.
void __osw_set_pixel_store(__osw_thread_state* state, __osw_client_state* client_state, GLenum pname, i32 value);
