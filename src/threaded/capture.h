// Copying the client arrays that a draw reads, so that the application need not wait for the replay. On the issuing
// thread.
#pragma once

#include "pipeline/cmd.h"
#include "threaded/client_arrays.h"

// What a capture hands out.
struct captured_arrays {
  void* blobs[cmd_slots];  // heap blocks, for the draw's command to carry
  u32 blob_count;          // 0 or 1
  u32 mask;                // the arrays that were captured, by index
  GLuint array_buffer;     // what GL has bound while they point at the block
  bool out_of_memory;      // the draw has to be dropped: its arrays may be gone by the time of replay
};

// Bytes of one component of a GL type; 0 for a type that is none.
u32 __osw_gl_type_size(GLenum type);

// Copies the vertices from `first` up to `end`, exclusive, of every enabled array in application memory into one block,
// and pushes pointer commands that aim the workers at it. `indexed` tells an element draw. Result: 1 when the draw
// cannot be captured, because its indices lie in a buffer or its range is beyond what a block can hold: the draw then
// reads the application's arrays itself and has to be waited for; else 0. A range that is empty captures nothing.
u32 __osw_capture_arrays(__osw_thread_state* state, bool indexed, u32 first, u64 end, captured_arrays* captured);

// The two steps of it, for arrays that the caller has chosen, by index, and given an effective stride and a reach. The
// first makes the block; its result is as above. The second, for what the first one has copied, pushes the pointer
// commands; `array_buffer` is the buffer that the workers have bound.
u32 copy_listed_arrays(__osw_thread_state* state, u32 mask, u32 first, u64 end, captured_arrays* captured);
void aim_listed_arrays(__osw_thread_state* state, u32 mask, GLuint array_buffer, captured_arrays* captured);

// Puts arrays that are interleaved in one block into one group. `list` holds `count` array indices in ascending order.
void __osw_group_arrays(__osw_client_state* client_state, const u32* list, u32 count);

// Pushes the application's own pointers again for the arrays that were captured.
void __osw_restore_arrays(__osw_thread_state* state, const captured_arrays& captured);
