// What the threaded path knows of a context's client arrays and buffer bindings without asking anyone.
#pragma once

#include "ops/types.h"

constexpr u32 max_client_arrays = 32;
constexpr u32 unknown_array = 32;  // the index of an unknown enum, or of an attribute of 16 and above

// Arrays that one copy serves, because they are interleaved in one block. Scratch of the present capture.
struct __osw_array_group {
  const u8* base;   // lowest pointer among the group's arrays
  u32 stride;       // their common effective stride
  u32 blob_offset;  // where the group's region starts in the block
  u32 copy_start;   // bytes
  u32 copy_size;    // bytes, of which the last vertex may take less than a stride
  u32 alloc_size;   // bytes
};

// Which pointer call has set an attribute.
enum class array_kind : u8 { floats, integers, doubles };

struct __osw_client_array {
  u32 array;   // the array's enum; for a vertex attribute its number
  u32 buffer;  // the array buffer at the pointer call
  i32 size;    // components
  u32 type;
  u8 normalized;         // attributes only
  i32 stride;            // as the application gave it
  const void* pointer;   // the application's, or an offset into the buffer
  u32 index;             // the entry's own array index
  u32 effective_stride;  // from here on scratch of the present capture
  u32 group;
  u32 group_offset;
  u32 reach;        // bytes of a vertex that are read, from the pointer on
  array_kind kind;  // attributes only, in the extended mode
};

// Only the thread that has the context current touches it; workers never do.
struct __osw_client_state {
  __osw_array_group groups[max_client_arrays];
  u32 group_count;
  __osw_client_array arrays[max_client_arrays];
  u32 array_buffer;  // bindings
  u32 element_buffer;
  u32 pack_buffer;
  u32 unpack_buffer;
  u32 framebuffer;
  u32 enabled_mask;     // bit i: array i is enabled
  u32 buffered_mask;    // bit i: array i was recorded with an array buffer bound
  u32 client_texture;   // the active client texture unit
  u32 indirect_buffer;  // in the extended mode
};
