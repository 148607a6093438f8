// What the compiler reads from an op's prototype and its payload: the slots of the parameters that a row names.
#pragma once

#include <tuple>
#include <type_traits>
#include <utility>

#include "ops/types.h"

template <class Type>
struct prototype;

template <class Result, class... Parameters>
struct prototype<Result(Parameters...)> {
  using result = Result;
  using parameters = std::tuple<Parameters...>;
  static constexpr u32 count = sizeof...(Parameters);
};

template <class Op>
constexpr u32 parameter_count = prototype<typename Op::type>::count;

template <class Result, class... Parameters>
consteval u32 array_slot_in(Result (*)(Parameters...)) {
  constexpr bool is_pointer[] = {std::is_pointer_v<Parameters>..., false};
  u32 slot = sizeof...(Parameters);
  while (slot > 0 && !is_pointer[slot - 1]) --slot;
  return slot > 0 ? slot - 1 : sizeof...(Parameters);
}

// The slot of the array that a payload speaks of: the last pointer among the parameters.
template <class Op>
constexpr u32 array_slot = array_slot_in(static_cast<typename Op::type*>(nullptr));

// What one element of that array is; bytes where the pointer does not tell.
template <class Pointer>
struct element_of_pointer;
template <class Element>
struct element_of_pointer<Element*> {
  using type = std::conditional_t<std::is_void_v<Element>, u8, Element>;
};
template <class Op>
using array_element = typename element_of_pointer<
    std::tuple_element_t<array_slot<Op>, typename prototype<typename Op::type>::parameters>>::type;

template <class Parameter>
consteval Parameter slot_as_value(size_t slot) {
  if constexpr (std::is_pointer_v<Parameter>) {
    return nullptr;
  } else {
    return static_cast<Parameter>(slot);
  }
}

template <class Op, class Result, class... Parameters, size_t... slot>
consteval u32 items_slot_in(Result (*)(Parameters...), std::index_sequence<slot...>) {
  return static_cast<u32>(Op::payload(slot_as_value<Parameters>(slot)...).items);
}

// The slot of the parameter that counts the items of an op's array: its payload is asked which one it takes.
template <class Op>
constexpr u32 items_slot = items_slot_in<Op>(static_cast<typename Op::type*>(nullptr),
                                             std::make_index_sequence<parameter_count<Op>>());
