// Calls of an op with arguments that can be told from each other, made from its type.
#pragma once

#include "recording_driver.h"

namespace sample {

// The argument at `index`: for integers all bits of the width are used, and pointers lead nowhere.
template <class Value>
Value argument(int index) {
  if constexpr (std::is_floating_point_v<Value>) {
    return static_cast<Value>(index) + static_cast<Value>(1.25);
  } else if constexpr (std::is_pointer_v<Value>) {
    return reinterpret_cast<Value>(0x7A00000000000000 + 0x1001 * (static_cast<u64>(index) + 1));
  } else {
    return static_cast<Value>(0x8C95A3B1C7D9E5F3 * (static_cast<u64>(index) + 1));
  }
}

template <class Type>
struct of_type;

template <class Result, class... Parameters>
struct of_type<Result(Parameters...)> {
  template <std::size_t... indices>
  static u64 call(Result (*function)(Parameters...), std::index_sequence<indices...>) {
    if constexpr (std::is_void_v<Result>) {
      function(argument<Parameters>(static_cast<int>(indices))...);
      return 0;
    } else {
      return driver::bits_of(function(argument<Parameters>(static_cast<int>(indices))...));
    }
  }
  template <std::size_t... indices>
  static driver::argument_bits bits(std::index_sequence<indices...>) {
    return {driver::bits_of(argument<Parameters>(static_cast<int>(indices)))...};
  }
  static constexpr std::size_t count = sizeof...(Parameters);
  static constexpr bool has_result = !std::is_void_v<Result>;
  static constexpr std::size_t result_size = [] {
    if constexpr (has_result) return sizeof(Result);
    return std::size_t{0};
  }();
};

// Calls a function of the op's type. Result: the bits of its result, 0 for none.
template <class Op>
u64 call(typename Op::type* function) {
  using type = of_type<typename Op::type>;
  return type::call(function, std::make_index_sequence<type::count>());
}

// What the driver notes of that call.
template <class Op>
driver::call expected() {
  using type = of_type<typename Op::type>;
  driver::call call;
  call.space = driver::space_of<Op>;
  call.op = Op::op;
  call.argument_count = type::count;
  call.arguments = type::bits(std::make_index_sequence<type::count>());
  return call;
}

// The low bytes of `bits` that a result of the op has.
template <class Op>
u64 result_of(u64 bits) {
  constexpr std::size_t size = of_type<typename Op::type>::result_size;
  return size == 8 ? bits : bits & ((u64{1} << (size * 8)) - 1);
}

}  // namespace sample
