#include "app_memory.h"

#include <sys/mman.h>

#include <cstdlib>
#include <cstring>

namespace fuzz {

namespace {

constexpr u64 slot_distance = slot_bytes + guard_bytes;
constexpr u64 arena_bytes = array_slots * slot_distance + guard_bytes;

u8* pages_of(const app_memory& memory, const array_slot* slot) {
  return memory.arena + guard_bytes + static_cast<u64>(slot - memory.slots) * slot_distance;
}

}  // namespace

// The library compares the low halves of addresses, as it is told to: the arena keeps within one half's range.
void begin(app_memory* memory) {
  void* twice = mmap(nullptr, 2 * arena_bytes, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  if (twice == MAP_FAILED) std::abort();
  const u64 address = reinterpret_cast<u64>(twice);
  const bool crosses = address >> 32 != (address + arena_bytes) >> 32;
  const u64 border = ((address >> 32) + 1) << 32;
  memory->arena = static_cast<u8*>(twice) + (crosses ? border - address : 0);
}

// The arena is left to the process: pointers into it may be part of a context's state for good.
void end(app_memory* memory) {
  ruin_blocks_of_call(memory);
  free_kept_blocks(memory);
}

void fill_with_noise(app_memory* memory, u8* bytes, u64 size) {
  for (u64 i = 0; i < size; i += 8) {
    memory->fill = memory->fill * 6364136223846793005 + 1442695040888963407;
    const u64 noise = memory->fill ^ memory->fill >> 29;
    std::memcpy(bytes + i, &noise, size - i < 8 ? size - i : 8);
  }
}

u8* take_block(app_memory* memory, u64 size) {
  auto* bytes = static_cast<u8*>(std::malloc(size ? size : 1));
  fill_with_noise(memory, bytes, size);
  memory->of_call.push_back({bytes, size});
  return bytes;
}

u8* take_kept_block(app_memory* memory, u64 size) {
  u8* bytes = take_block(memory, size);
  memory->kept.push_back(memory->of_call.back());
  memory->of_call.pop_back();
  return bytes;
}

void ruin_blocks_of_call(app_memory* memory) {
  for (const memory_block& block : memory->of_call) {
    fill_with_noise(memory, block.bytes, block.size);
    std::free(block.bytes);
  }
  memory->of_call.clear();
}

void free_kept_blocks(app_memory* memory) {
  for (const memory_block& block : memory->kept) std::free(block.bytes);
  memory->kept.clear();
}

array_slot* take_slot(app_memory* memory, u64 size, u32 arrays) {
  if (size > slot_bytes) return nullptr;
  for (array_slot& slot : memory->slots) slot.arrays &= ~arrays;
  for (u32 tries = 0; tries < array_slots; ++tries) {
    array_slot* slot = &memory->slots[memory->next_slot++ % array_slots];
    if (slot->arrays) continue;
    u8* pages = pages_of(*memory, slot);
    if (!slot->block.bytes && mprotect(pages, slot_bytes, PROT_READ | PROT_WRITE) != 0) std::abort();
    slot->block = {pages + slot_bytes - size, size};
    slot->arrays = arrays;
    fill_with_noise(memory, slot->block.bytes, size);
    return slot;
  }
  return nullptr;
}

array_slot* slot_of(app_memory* memory, u32 array) {
  for (array_slot& slot : memory->slots) {
    if (slot.block.bytes && slot.arrays & 1u << array) return &slot;
  }
  return nullptr;
}

void close_slot(app_memory* memory, array_slot* slot) {
  if (!slot->block.bytes) return;
  if (mprotect(pages_of(*memory, slot), slot_bytes, PROT_NONE) != 0) std::abort();
  slot->block = {nullptr, 0};
  slot->arrays = 0;
}

}  // namespace fuzz
