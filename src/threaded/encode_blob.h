// The encoder families that copy what a call points at: into the record while it is small, else into a heap block.
#pragma once

#include "threaded/blob.h"
#include "threaded/encode.h"
#include "threaded/image_size.h"

// An array that is the call's last parameter goes where it fits: `bytes` of it into the slots behind the parameters, or
// into a block. Result: the mask of the block's slot, or 0; `slots` takes the address.
template <u32 count>
inline u32 place_array(__osw_thread_state* state, u64 (&slots)[count], const void* data, u64 bytes) {
  constexpr u64 room = (cmd_slots - count) * sizeof(u64);
  if (bytes <= room) {
    slots[count - 1] = to_slot(put_in_record(__osw_next_cmd(state->cmd_queue), count, data, bytes));
    return 0;
  }
  return data ? 1u << (count - 1) : 0;
}

// Copies an array that did not fit. Without memory the command goes out with a count of 0, which does nothing.
template <u32 count>
inline void place_block(u64 (&slots)[count], u32* mask, u32 count_slot, const void* data, u64 bytes, const char* name) {
  if (!*mask) return;
  void* blob = __osw_copy_to_blob(data, bytes, name);
  slots[count - 1] = to_slot(blob);
  if (blob) return;
  slots[count_slot] = 0;
  *mask = 0;
}

// Pushes an array of `item_size` bytes an item, whose number of items stands in slot `count_slot`, as the last
// parameter.
template <class Op, u32 count_slot, class... Parameters>
void push_array(__osw_thread_state* state, u64 item_size, Parameters... arguments) {
  constexpr u32 count = sizeof...(Parameters);
  u64 slots[] = {to_slot(arguments)...};
  const void* data = from_slot<const void*>(slots[count - 1]);
  const u64 bytes = __osw_checked_bytes(from_slot<i32>(slots[count_slot]), item_size);
  u32 mask = place_array(state, slots, data, bytes);
  place_block(slots, &mask, count_slot, data, bytes, Op::name);
  __osw_push_gl_cmd(state, Op::op, count, slots, mask);
}

template <class Op, u32 count_slot, class... Parameters>
void encode_array(u64 item_size, Parameters... arguments) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  mirror<Op>(state, arguments...);
  push_array<Op, count_slot>(state, item_size, arguments...);
}

// A number of names that no memory can hold goes out with a null array, so that no worker walks it.
template <class Op>
void encode_names(GLsizei count, const GLuint* names) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  mirror<Op>(state, count, names);
  const bool too_many = count > 0 && !__osw_checked_bytes(count, sizeof *names);
  push_array<Op, 0>(state, sizeof *names, count, too_many ? nullptr : names);
}

template <class Op, int components, class T>
void encode_uniform(GLint location, GLsizei count, const T* values) {
  encode_array<Op, 1>(components * sizeof *values, location, count, values);
}

template <class Op, int components>
void encode_uniform(GLint location, GLsizei count, GLboolean transpose, const GLfloat* values) {
  encode_array<Op, 1>(components * sizeof *values, location, count, transpose, values);
}

// Pixels or compressed data, the last parameter. With an unpack buffer bound the pointer is an offset into it, and
// nothing is copied. Without memory the call is dropped on all parts alike.
template <class Op, u32 count>
inline void push_image(__osw_thread_state* state, u64 (&slots)[count], u64 bytes) {
  const void* data = from_slot<const void*>(slots[count - 1]);
  if (state->glrc->client_state.unpack_buffer) return __osw_push_gl_cmd(state, Op::op, count, slots, 0);
  void* blob = data ? __osw_copy_to_blob(data, bytes, Op::name) : nullptr;
  if (data && !blob) return;
  slots[count - 1] = to_slot(blob);
  __osw_push_gl_cmd(state, Op::op, count, slots, 1u << (count - 1));
}

template <class Op, class Result, class... Parameters>
Result encode_image(Parameters... arguments) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  mirror<Op>(state, arguments...);
  u64 slots[] = {to_slot(arguments)...};
  push_image<Op>(state, slots, __osw_image_bytes<Op>(state, slots));
}

template <class Op, class Result, class... Parameters>
Result encode_compressed(Parameters... arguments) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  mirror<Op>(state, arguments...);
  u64 slots[] = {to_slot(arguments)...};
  push_image<Op>(state, slots, __osw_checked_bytes(from_slot<GLsizei>(slots[sizeof...(Parameters) - 2]), 1));
}
