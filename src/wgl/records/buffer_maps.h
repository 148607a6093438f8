// The buffers that programs have mapped, in the extended mode: what a program reads and writes is a block of the
// library's, whose bytes go to all parts. Any thread, under a lock of their own.
#pragma once

#include "dispatch/thread_state.h"

struct buffer_map {
  // Where the context that answers for the program has mapped the buffer: no two of them lie at one address.
  const void* home;
  u8* bytes;        // what the program sees as its mapping
  void* block;      // of the heap, in which they lie
  GLintptr offset;  // in the buffer, and how many
  u64 size;
  GLbitfield access;
  u32 buffer;             // its name
  HGLRC hglrc;            // the context that mapped it
  void* part[max_parts];  // each part's own mapping; sequential path only
};

// Made and deleted with a process of the extended mode.
void make_buffer_map_lock();
void delete_buffer_map_lock();

// Notes a mapping, which owns its block from now on. An earlier one at the same address has ended unseen, and is freed.
// Result: false without memory, when nothing is noted.
bool enter_buffer_map(const buffer_map& map);

// Finds the mapping at an address. Result: whether there is one.
bool find_buffer_map(const void* home, buffer_map* found);

// The same, and takes it away: the caller owns the block.
bool take_buffer_map(const void* home, buffer_map* taken);

// Whether any buffer is mapped. Never wrong about those that the calling thread has mapped.
bool has_buffer_maps();

// Frees the mappings of buffers whose storage is gone, of those that the context has mapped. Null for no buffer.
void drop_buffer_maps(HGLRC hglrc, i32 count, const u32* buffers);

// Frees all mappings. Only when no context is left, for a buffer may outlive the context that has mapped it.
void free_buffer_maps();
