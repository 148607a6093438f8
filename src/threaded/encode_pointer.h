// The pointer calls of the client arrays: their general encoder, and the call that a record of an array stands for.
#pragma once

#include "ops/client_arrays.h"
#include "threaded/client_arrays.h"
#include "threaded/encode.h"

// What a pointer call says, or implies, of its array.
struct pointer_call {
  i32 size;
  u32 type;
  i32 stride;
  const void* pointer;
};

template <class Array>
inline pointer_call described(GLint size, GLenum type, GLsizei stride, const void* pointer) {
  return {size, type, stride, pointer};
}
template <class Array>
inline pointer_call described(GLenum type, GLsizei stride, const void* pointer) {
  return {Array::size, type, stride, pointer};
}
template <class Array>
inline pointer_call described(GLsizei stride, const void* pointer) {
  return {Array::size, Array::type, stride, pointer};
}

template <class Op, class Result, class... Parameters>
Result encode_pointer(Parameters... arguments) {
  using array = typename client_array_of<Op>::row;
  __osw_thread_state* state = __osw_fetch_thread_state();
  mirror<Op>(state, arguments...);
  const pointer_call call = described<array>(arguments...);
  __osw_set_client_array(state, &state->glrc->client_state, array::array, false, call.size, call.type, 0, call.stride,
                         call.pointer);
  push<Op>(state, arguments...);
}

// Appends the pointer call of a recorded array, with `pointer` in the place of the application's.
template <class Op>
inline void push_pointer_call(__osw_thread_state* state, const __osw_client_array& array, const void* pointer) {
  if constexpr (parameter_count<Op> == 4) {
    push<Op>(state, array.size, array.type, array.stride, pointer);
  } else if constexpr (parameter_count<Op> == 3) {
    push<Op>(state, array.type, array.stride, pointer);
  } else {
    static_assert(parameter_count<Op> == 2);
    push<Op>(state, array.stride, pointer);
  }
}
