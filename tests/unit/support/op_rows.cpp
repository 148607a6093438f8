#include "support/op_rows.h"

#include <cstring>
#include <utility>

#include "ops/tables.h"

namespace ops {

namespace {

// What the column `payload` makes of a call's parameters, asked with zeros: a pname of 0 names no values.
template <class Op, class Result, class... Parameters>
constexpr auto payload_of(Result (*)(Parameters...)) {
  return Op::payload(Parameters{}...);
}

template <class Op>
constexpr family family_of(const record_payload& payload) {
  return payload.elements ? family::vector : family::parameters;
}
// Names are counted by the first parameter, uniforms by the one behind their location.
template <class Op>
constexpr family family_of(const array_payload&) {
  return items_slot<Op> == 0 ? family::names : family::uniform;
}
template <class Op>
constexpr family family_of(const items_payload&) {
  return family::items;
}
template <class Op>
constexpr family family_of(const text_payload&) {
  return family::text;
}
template <class Op>
constexpr family family_of(const texel_payload&) {
  return family::texel;
}
template <class Op, std::size_t count>
constexpr family family_of(const arrays_payload<count>&) {
  return family::arrays;
}
template <class Op>
constexpr family family_of(const image_payload&) {
  return family::image;
}
template <class Op>
constexpr family family_of(const block_payload&) {
  return family::compressed;
}

template <class Op>
constexpr family word_of() {
  switch (Op::threaded::value) {
    case threaded_word::plain:
      return family::plain;
    case threaded_word::query:
      return family::query;
    case threaded_word::alias:
      return family::alias;
    case threaded_word::copied:
      if constexpr (Op::threaded::value == threaded_word::copied) {
        return family_of<Op>(payload_of<Op>(static_cast<typename Op::type*>(nullptr)));
      }
      break;
    case threaded_word::app_only:
      return family::app_only;
    case threaded_word::create:
      return family::create;
    case threaded_word::none:
      return family::none;
    case threaded_word::array:
    case threaded_word::own:
    case threaded_word::kept:
      break;
  }
  return family::own;
}

template <class Base>
constexpr int number_of = Base::op;
template <>
constexpr int number_of<none_op> = -1;
template <>
constexpr int number_of<driver_op> = -1;

template <class T>
constexpr parameter parameter_of() {
  u32 element_size = 0;
  bool is_const = false;
  if constexpr (std::is_pointer_v<T>) {
    using element = std::remove_pointer_t<T>;
    is_const = std::is_const_v<element>;
    if constexpr (requires { sizeof(element); } && std::is_object_v<element>) {
      element_size = sizeof(element);
    } else {
      element_size = 1;
    }
  }
  return {sizeof(T), std::is_pointer_v<T>, std::is_floating_point_v<T>, element_size, is_const};
}

template <class T>
T value_of(u64 bits) {
  T value;
  std::memcpy(&value, &bits, sizeof value);
  return value;
}

template <class Type>
struct prototype;
template <class Result, class... Parameters>
struct prototype<Result(Parameters...)> {
  static constexpr u32 count = sizeof...(Parameters);
  static constexpr std::array<parameter, driver::most_arguments> parameters = {parameter_of<Parameters>()...};
  static constexpr u32 result_size = [] {
    if constexpr (std::is_void_v<Result>) {
      return 0u;
    } else {
      return static_cast<u32>(sizeof(Result));
    }
  }();
  template <std::size_t... indices>
  static u64 call_at(Result (*function)(Parameters...), [[maybe_unused]] const driver::argument_bits& arguments,
                     std::index_sequence<indices...>) {
    if constexpr (std::is_void_v<Result>) {
      function(value_of<Parameters>(arguments[indices])...);
      return 0;
    } else {
      return driver::bits_of(function(value_of<Parameters>(arguments[indices])...));
    }
  }
  static u64 call(__osw_proc function, const driver::argument_bits& arguments) {
    return call_at(reinterpret_cast<Result (*)(Parameters...)>(function), arguments,
                   std::index_sequence_for<Parameters...>());
  }
};

template <class Op>
row row_of(__osw_proc entry) {
  using type = prototype<typename Op::type>;
  return {.name = Op::name,
          .op = Op::op,
          .base = number_of<typename Op::base>,
          .is_driver_op = std::is_same_v<typename Op::base, driver_op>,
          .sync = Op::sync == op_sync::sync,
          .threaded = word_of<Op>(),
          .first_part_answers = Op::replaying::value == replay_word::first,
          .count = type::count,
          .parameters = type::parameters,
          .result_size = type::result_size,
          .entry = entry,
          .call = type::call};
}

u64 low_bytes(u64 bits, u32 size) {
  return size >= sizeof bits ? bits : bits & ((u64{1} << (size * 8)) - 1);
}

}  // namespace

std::span<const row> every() {
  using rows = std::array<row, gl_all_count>;
  static rows basic;
  static const rows extended = [] {
    rows made;
    const auto add = [&]<class Op>() { made[Op::op] = row_of<Op>(__osw_gl_entries[Op::op]); };
    for_each_gl_op(add);
    for_each_wide_op(add);
    basic = made;
    for_each_changed_op(add);
    return made;
  }();
  return gl_ops_in_use == gl_op_count ? basic : extended;
}

std::span<const row> all() {
  return every().first(static_cast<std::size_t>(gl_ops_in_use));
}

const row& of(int op) {
  return every()[static_cast<std::size_t>(op)];
}

bool makes_names(const row& row) {
  // One has an encoder of its own, for the strings.
  if (row.op == glCreateShaderProgramv_op::op) return true;
  return (row.base >= 0 ? of(row.base) : row).threaded == family::create;
}

driver::argument_bits distinctive(const row& row) {
  driver::argument_bits bits = {};
  for (u32 i = 0; i < row.count; ++i) {
    const parameter& parameter = row.parameters[i];
    if (parameter.is_pointer) {
      bits[i] = 0x7A00000000000000 + 0x1001 * (u64{i} + 1);
    } else if (!parameter.is_floating) {
      bits[i] = low_bytes(0x8C95A3B1C7D9E5F3 * (u64{i} + 1), parameter.size);
    } else if (parameter.size == sizeof(float)) {
      bits[i] = driver::bits_of(static_cast<float>(i) + 1.25f);
    } else {
      bits[i] = driver::bits_of(i + 1.25);
    }
  }
  return bits;
}

driver::call noted(const row& row, const driver::argument_bits& arguments) {
  driver::call call;
  call.op = row.op;
  call.argument_count = row.count;
  for (u32 i = 0; i < row.count; ++i) call.arguments[i] = low_bytes(arguments[i], row.parameters[i].size);
  return call;
}

u64 result_of(const row& row, u64 bits) {
  return low_bytes(bits, row.result_size);
}

}  // namespace ops
