// The encoders that copy what a call points at: into the record while it is small, else into a heap block.
#pragma once

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
    slots[array_slot<Op>] = to_slot(put_in_record(__osw_next_cmd(state->cmd_queue), count, data, bytes));
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
