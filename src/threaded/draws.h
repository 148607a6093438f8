// What encoders of draws share: the vertices that indices name, and the captured block in the draw's record. On the
// issuing thread.
#pragma once

#include "threaded/capture.h"

struct index_range {
  u32 first = static_cast<u32>(-1);
  u64 end = 0;  // one past the last; not above `first` when the range is empty
};

// The vertices that `count` indices name. Those of a type that is none name none.
index_range scan_indices(GLenum type, const void* indices, GLsizei count);

// Bytes of an index; 0 for a type that is none.
u32 index_bytes(GLenum type);

// Puts the captured blocks into the record that the draw will use, behind its parameters. Result: their mask.
u32 carry_blobs(const __osw_thread_state* state, u32 slot, const captured_arrays& captured);
