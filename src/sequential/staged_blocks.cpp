#include "sequential/staged_blocks.h"

#include <cstdlib>

struct staged_block {
  void* bytes;
  const void* part_mapping;
  staged_block* next;
};

namespace {

void free_block(staged_block* block) {
  free(block->bytes);
  free(block);
}

// A buffer that was deleted is not unmapped, and one that was unmapped may be the one that is mapped again.
void free_blocks_mapped_at(__osw_thread_state* state, const void* part_mapping) {
  for (staged_block** at = &state->staged_blocks; *at;) {
    staged_block* block = *at;
    if (block->part_mapping != part_mapping) {
      at = &block->next;
      continue;
    }
    *at = block->next;
    free_block(block);
    if (state->unmapped_blocks > 0) --state->unmapped_blocks;
  }
}

i32 count_of(const staged_block* block) {
  i32 count = 0;
  for (; block; block = block->next) ++count;
  return count;
}

}  // namespace

void* make_staged_block(__osw_thread_state* state, u64 size, const void* part_mapping) {
  if (part_mapping) free_blocks_mapped_at(state, part_mapping);
  state->map_staging = nullptr;
  auto* block = static_cast<staged_block*>(malloc(sizeof(staged_block)));
  if (!block) return nullptr;
  *block = {calloc(size, 1), part_mapping, state->staged_blocks};
  if (!block->bytes) {
    free(block);
    return nullptr;
  }
  state->staged_blocks = block;
  state->map_staging = block->bytes;
  return block->bytes;
}

void end_staged_block(__osw_thread_state* state) {
  if (!state->staged_blocks) return;
  if (++state->unmapped_blocks >= count_of(state->staged_blocks)) free_staged_blocks(state);
}

void free_staged_blocks(__osw_thread_state* state) {
  while (staged_block* block = state->staged_blocks) {
    state->staged_blocks = block->next;
    free_block(block);
  }
  state->unmapped_blocks = 0;
}
