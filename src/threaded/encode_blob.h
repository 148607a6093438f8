// The encoders that copy what a call points at: into the record while it is small, else into a heap block.
#pragma once

#include <cstdlib>

#include "threaded/blob.h"
#include "threaded/encode.h"
#include "threaded/image_size.h"

// A block stands in the slot of the array that it is a copy of.
template <class Op>
constexpr u32 array_blob = 1u << array_slot<Op>;

// Bytes of an op's array by its payload; `too_many_bytes` for one that no block can hold.
template <class Op>
inline u64 bytes_of(const array_payload& payload) {
  return __osw_checked_bytes(payload.items, payload.elements * sizeof(array_element<Op>));
}

// Copies the array that an op's payload speaks of into the slots behind the parameters, or into a block when it does
// not fit there. Without memory the command goes out with a count of 0, which does nothing.
template <class Op, class... Parameters>
inline void push_copied(__osw_thread_state* state, const array_payload& payload, Parameters... arguments) {
  constexpr u32 count = sizeof...(Parameters);
  static_assert(array_slot<Op> == count - 1);
  constexpr u64 room = (cmd_slots - count) * sizeof(u64);
  u64 slots[] = {to_slot(arguments)...};
  const void* data = from_slot<const void*>(slots[array_slot<Op>]);
  const u64 bytes = bytes_of<Op>(payload);
  u32 mask = 0;
  if (bytes <= room) {
    slots[array_slot<Op>] = to_slot(put_in_record(begin_cmd(state), count, data, bytes));
  } else if (data) {
    void* blob = __osw_copy_to_blob(data, bytes, Op::name);
    slots[array_slot<Op>] = to_slot(blob);
    if (blob) {
      mask = array_blob<Op>;
    } else {
      slots[items_slot<Op>] = 0;
    }
  }
  __osw_push_gl_cmd(state, Op::op, count, slots, mask);
}

// Copies `bytes` from an op's array into the slots behind the parameters, or into a block when they do not fit there. A
// null array stays null. Without memory the call is dropped on all parts alike.
template <class Op, class... Parameters>
inline void push_bytes(__osw_thread_state* state, u64 bytes, Parameters... arguments) {
  constexpr u32 count = sizeof...(Parameters);
  constexpr u64 room = (cmd_slots - count) * sizeof(u64);
  u64 slots[] = {to_slot(arguments)...};
  const void* data = from_slot<const void*>(slots[array_slot<Op>]);
  u32 mask = 0;
  if (data && bytes <= room) {
    slots[array_slot<Op>] = to_slot(put_in_record(begin_cmd(state), count, data, bytes));
  } else if (data) {
    void* blob = __osw_copy_to_blob(data, bytes, Op::name);
    if (!blob) return;
    slots[array_slot<Op>] = to_slot(blob);
    mask = array_blob<Op>;
  }
  __osw_push_gl_cmd(state, Op::op, count, slots, mask);
}

template <class Op, class... Parameters>
inline void push_copied(__osw_thread_state* state, const items_payload& payload, Parameters... arguments) {
  push_bytes<Op>(state, __osw_checked_bytes(payload.items, payload.elements * sizeof(array_element<Op>)), arguments...);
}

template <class Op, class... Parameters>
inline void push_copied(__osw_thread_state* state, const text_payload& payload, Parameters... arguments) {
  push_bytes<Op>(state, payload.text ? strlen(payload.text) + 1 : 0, arguments...);
}

// One pixel, which always fits. What GL may read beyond one of a type that is not known are slots of the record.
template <class Op, class... Parameters>
inline void push_copied(__osw_thread_state* state, const texel_payload& payload, Parameters... arguments) {
  push_bytes<Op>(state, texel_size(payload.format, payload.type), arguments...);
}

// A record that several arrays are copied for, before it is appended.
struct array_copies {
  u64* slots;     // of the parameters
  u32 next;       // slot of the record where the next short array goes
  u32 blobs = 0;  // mask
  bool failed = false;
};

// Replaces the address in slot `at` by that of a copy. Null stays null.
inline void copy_array(__osw_cmd* cmd, array_copies* copies, u32 at, u64 bytes, const char* function) {
  const void* data = from_slot<const void*>(copies->slots[at]);
  const u64 length = (bytes + sizeof(u64) - 1) / sizeof(u64);
  if (!data || copies->failed) return;
  if (length <= cmd_slots - copies->next) {
    memcpy(&cmd->args[copies->next], data, bytes);
    copies->slots[at] = to_slot(&cmd->args[copies->next]);
    copies->next += static_cast<u32>(length);
    return;
  }
  void* blob = __osw_copy_to_blob(data, bytes, function);
  copies->slots[at] = to_slot(blob);
  copies->blobs |= blob ? 1u << at : 0;
  copies->failed = !blob;
}

// Without memory for one of the arrays the call is dropped on all parts alike.
template <class Op, size_t arrays, class... Parameters>
inline void push_copied(__osw_thread_state* state, const arrays_payload<arrays>& payload, Parameters... arguments) {
  constexpr u32 count = sizeof...(Parameters);
  constexpr bool is_array[] = {std::is_pointer_v<Parameters>...};
  u64 slots[] = {to_slot(arguments)...};
  // An empty array at the record's end still has an address in it.
  array_copies copies{slots, count};
  const u64* bytes = payload.bytes;
  for (u32 at = 0; at < count; ++at) {
    if (is_array[at]) copy_array(begin_cmd(state), &copies, at, *bytes++, Op::name);
  }
  if (!copies.failed) return __osw_push_gl_cmd(state, Op::op, count, slots, copies.blobs);
  for (u32 at = 0; at < count; ++at) {
    if (copies.blobs & 1u << at) free(from_slot<void*>(slots[at]));
  }
}

// Pixels or compressed data. With an unpack buffer bound the pointer is an offset into it, and nothing is copied.
// Without memory the call is dropped on all parts alike.
template <class Op, class... Parameters>
inline void push_image(__osw_thread_state* state, const image_extent& bytes, Parameters... arguments) {
  constexpr u32 count = sizeof...(Parameters);
  u64 slots[] = {to_slot(arguments)...};
  const void* data = from_slot<const void*>(slots[array_slot<Op>]);
  if (state->glrc->client_state.unpack_buffer) return __osw_push_gl_cmd(state, Op::op, count, slots, 0);
  void* blob = data ? copy_reached_to_blob(data, bytes.told, bytes.reached, Op::name) : nullptr;
  if (data && !blob) return;
  slots[array_slot<Op>] = to_slot(blob);
  __osw_push_gl_cmd(state, Op::op, count, slots, array_blob<Op>);
}

template <class Op, class... Parameters>
inline void push_copied(__osw_thread_state* state, const image_payload& payload, Parameters... arguments) {
  push_image<Op>(state, __osw_image_extent(state, payload), arguments...);
}

template <class Op, class... Parameters>
inline void push_copied(__osw_thread_state* state, const block_payload& payload, Parameters... arguments) {
  const u64 bytes = __osw_checked_bytes(static_cast<i32>(payload.bytes), 1);
  push_image<Op>(state, {bytes, bytes}, arguments...);
}

// What the call points at is copied as its row's payload says.
template <class Op, class Result, class... Parameters>
Result encode_copied(Parameters... arguments) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  mirror<Op>(state, arguments...);
  push_copied<Op>(state, Op::payload(arguments...), arguments...);
}
