// The application's memory: what it hands to a call, and how it ruins all of it as soon as the call is back.
#pragma once

#include <vector>

#include "ops/types.h"

namespace fuzz {

struct memory_block {
  u8* bytes;
  u64 size;
};

constexpr u32 array_slots = 64;
constexpr u64 slot_bytes = 64 << 10;
constexpr u64 guard_bytes = 4096;

// Room for one set of client arrays, between pages that nobody may touch. The block ends with the last page.
struct array_slot {
  memory_block block = {nullptr, 0};  // null: nobody may touch the slot
  u32 arrays = 0;                     // bit i: array i points into it
};

struct app_memory {
  u64 fill = 1;
  std::vector<memory_block> of_call;  // ruined and freed when the call is back
  std::vector<memory_block> kept;     // freed when the parts have replayed everything
  u8* arena = nullptr;
  array_slot slots[array_slots];
  u32 next_slot = 0;
};

void begin(app_memory* memory);
void end(app_memory* memory);

// A block of exactly `size` bytes, on the heap, full of noise.
u8* take_block(app_memory* memory, u64 size);
// One that lives on until the parts have replayed.
u8* take_kept_block(app_memory* memory, u64 size);
void fill_with_noise(app_memory* memory, u8* bytes, u64 size);

void ruin_blocks_of_call(app_memory* memory);
void free_kept_blocks(app_memory* memory);

// A slot that no array points into, with room for exactly `size` bytes; null when there is none. `arrays` point into it
// from now on, and no longer into others.
array_slot* take_slot(app_memory* memory, u64 size, u32 arrays);
// The slot that an array points into, or null.
array_slot* slot_of(app_memory* memory, u32 array);
// Nobody may touch it from now on.
void close_slot(app_memory* memory, array_slot* slot);

}  // namespace fuzz
