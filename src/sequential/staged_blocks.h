// The blocks that a thread's application sees as mapped buffers. Only the last one made is copied to the parts, but
// each is the application's to write to until its buffer is unmapped, in whatever order that happens.
#pragma once

#include "dispatch/thread_state.h"

// Makes the zeroed block of a buffer that has just been mapped, and enters it in `map_staging`. `part_mapping` is where
// the first part has mapped the buffer, or null: an earlier block of a buffer that was mapped there is freed, for two
// buffers that are mapped do not lie at one address. Result: the block, or null without memory. The thread of the state
// calls it.
void* make_staged_block(__osw_thread_state* state, u64 size, const void* part_mapping);

// A mapped buffer is unmapped, and `map_staging` empty again. Which buffer's block is at its end is not known, so all
// are freed when as many have been unmapped as there are blocks. The thread of the state calls it.
void end_staged_block(__osw_thread_state* state);

// At the state's end, when nothing of its thread runs any more.
void free_staged_blocks(__osw_thread_state* state);
