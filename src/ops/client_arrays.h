// One tag type per client array of the fixed functions, and the look-up by what GL calls it.
#pragma once

#include "ops/ops.h"

// The generic vertex attributes stand behind the client arrays.
constexpr u32 first_attribute_index = 16;

// The tag of the array that a pointer call sets.
template <class Op>
struct client_array_of;

#define CLIENT_ARRAY(tag, position, enumerant, function, implied_size, implied_type) \
  struct tag##_array {                                                               \
    using call = function##_op;                                                      \
    static constexpr u32 index = position;                                           \
    static constexpr GLenum array = enumerant;                                       \
    static constexpr i32 size = implied_size;                                        \
    static constexpr GLenum type = implied_type;                                     \
  };                                                                                 \
  template <>                                                                        \
  struct client_array_of<function##_op> {                                            \
    using row = tag##_array;                                                         \
  };
#include "ops/client_arrays.inc"
#undef CLIENT_ARRAY

// Calls `work.operator()<Array>()` for the client array that GL calls `array`, which may be none of them.
template <class Work>
inline void for_client_array(GLenum array, Work work) {
  switch (array) {
#define CLIENT_ARRAY(tag, position, enumerant, ...) \
  case enumerant:                                   \
    return work.template operator()<tag##_array>();
#include "ops/client_arrays.inc"
#undef CLIENT_ARRAY
    default:
      return;
  }
}
