// What the op lists say, each as one figure: whatever a row means, an exchange of two rows, of their names, words,
// flags or payloads, gives another one.
#include <gtest/gtest.h>

#include <ios>
#include <string>
#include <string_view>
#include <tuple>

#include "ops/ops.h"
#include "support/expected_figures.h"

namespace {

// FNV-1a, of 64 bits.
struct digest {
  u64 value = 0xCBF29CE484222325;
  void add_byte(u8 byte) { value = (value ^ byte) * 0x100000001B3; }
  // A zero ends each text, so that two of them are not one longer one.
  void add(std::string_view text) {
    for (const char c : text) add_byte(static_cast<u8>(c));
    add_byte(0);
  }
  void add(u64 number) {
    for (int i = 0; i < 8; ++i) add_byte(static_cast<u8>(number >> (8 * i)));
  }
};

// Two types have the same text when a call cannot tell them apart, but for structures, which all have one.
template <class T>
std::string text_of() {
  if constexpr (std::is_const_v<T>) {
    return "const " + text_of<std::remove_const_t<T>>();
  } else if constexpr (std::is_pointer_v<T>) {
    return text_of<std::remove_pointer_t<T>>() + "*";
  } else if constexpr (std::is_void_v<T>) {
    return "void";
  } else if constexpr (std::is_arithmetic_v<T>) {
    const char* const kind = std::is_floating_point_v<T> ? "float" : std::is_signed_v<T> ? "int" : "uint";
    return kind + std::to_string(sizeof(T));
  } else {
    return std::is_function_v<T> ? "function" : "struct";
  }
}

// ---- what a call copies ----

void add(digest* sum, const record_payload& payload) {
  sum->add(payload.elements);
}

void add(digest* sum, const array_payload& payload) {
  sum->add(static_cast<u64>(payload.items));
  sum->add(payload.elements);
}

void add(digest* sum, const items_payload& payload) {
  sum->add(static_cast<u64>(payload.items));
  sum->add(payload.elements);
}

void add(digest* sum, const text_payload& payload) {
  sum->add(std::string_view(payload.text ? "another text" : "text"));
}

void add(digest* sum, const texel_payload& payload) {
  sum->add(payload.format);
  sum->add(payload.type);
}

template <size_t count>
void add(digest* sum, const arrays_payload<count>& payload) {
  for (const u64 bytes : payload.bytes) sum->add(bytes);
}

void add(digest* sum, const names_payload& payload) {
  sum->add(static_cast<u64>(payload.items));
}

void add(digest* sum, const block_payload& payload) {
  sum->add(static_cast<u64>(payload.bytes));
}

void add(digest* sum, const image_payload& payload) {
  for (const i32 size : payload.size) sum->add(static_cast<u64>(size));
  sum->add(static_cast<u64>(payload.dimensions));
  sum->add(payload.format);
  sum->add(payload.type);
}

// Arguments that can be told from each other; pointers lead nowhere.
template <class Parameter>
Parameter argument(int* number) {
  *number += 7;
  if constexpr (std::is_pointer_v<Parameter>) {
    return nullptr;
  } else {
    return static_cast<Parameter>(*number);
  }
}

template <class Op, class Type>
struct prototype_of;
template <class Op, class Result, class... Parameters>
struct prototype_of<Op, Result(Parameters...)> {
  static void add_to(digest* sum) {
    sum->add(text_of<Result>());
    (sum->add(text_of<Parameters>()), ...);
    if constexpr (requires { &Op::payload; }) {
      int number = 0;
      const auto payload = Op::payload;
      const std::tuple<Parameters...> arguments{argument<Parameters>(&number)...};
      add(sum, std::apply(payload, arguments));
    }
  }
};

// ---- words ----

template <class Base>
struct name_of_base {
  static constexpr const char* text = Base::name;
};
template <>
struct name_of_base<none_op> {
  static constexpr const char* text = "none";
};
template <>
struct name_of_base<driver_op> {
  static constexpr const char* text = "driver";
};

template <class Word>
struct wgl_word;
template <>
struct wgl_word<wgl_forward> {
  static std::string text() { return "forward"; }
};
template <>
struct wgl_word<wgl_warn> {
  static std::string text() { return "warn"; }
};
template <>
struct wgl_word<wgl_zero> {
  static std::string text() { return "zero"; }
};
template <>
struct wgl_word<wgl_own> {
  static std::string text() { return "own"; }
};
template <class Target>
struct wgl_word<wgl_to<Target>> {
  static std::string text() { return std::string("to ") + Target::name; }
};
template <class Target>
struct wgl_word<wgl_row<Target>> {
  static std::string text() { return std::string("row ") + Target::name; }
};

// ---- rows ----

template <class Op>
void add_common(digest* sum) {
  sum->add(static_cast<u64>(Op::op));
  sum->add(std::string_view(Op::name));
  sum->add(static_cast<u64>(Op::sync));
  sum->add(static_cast<u64>(Op::replaying::value));
  prototype_of<Op, typename Op::type>::add_to(sum);
}

constexpr auto add_gl_row = []<class Op>(digest* sum) {
  add_common<Op>(sum);
  sum->add(static_cast<u64>(Op::threaded::value));
  sum->add(static_cast<u64>(Op::sequential::value));
  sum->add(std::string_view(name_of_base<typename Op::base>::text));
};

u64 digest_of_gl_ops() {
  digest sum;
  for_each_gl_op([&]<class Op>() { add_gl_row.operator()<Op>(&sum); });
  return sum.value;
}

u64 digest_of_wide_ops() {
  digest sum;
  for_each_wide_op([&]<class Op>() { add_gl_row.operator()<Op>(&sum); });
  return sum.value;
}

// Of the ops that the extended mode changes, and of the other names of those.
u64 digest_of_changed_ops() {
  digest sum;
  for_each_changed_op([&]<class Op>() { add_gl_row.operator()<Op>(&sum); });
  return sum.value;
}

u64 digest_of_wgl_ops() {
  digest sum;
  for_each_wgl_op([&]<class Op>() {
    add_common<Op>(&sum);
    sum.add(wgl_word<typename Op::main>::text());
    sum.add(wgl_word<typename Op::bypassed>::text());
  });
  return sum.value;
}

void expect_digest(const char* list, u64 found, u64 expected, const char* figure) {
  EXPECT_EQ(found, expected) << "a row of " << list << " says something else than before. If that is what you want, "
                             << figure << " in expected_figures.h becomes 0x" << std::hex << std::uppercase << found;
}

TEST(op_list_test, each_row_of_the_gl_list_says_what_it_said) {
  expect_digest("gl_ops.inc", digest_of_gl_ops(), figures::gl_list_digest, "gl_list_digest");
}

TEST(op_list_test, each_row_of_the_wide_list_says_what_it_said) {
  expect_digest("gl_wide.inc", digest_of_wide_ops(), figures::wide_list_digest, "wide_list_digest");
}

TEST(op_list_test, each_row_of_the_changed_list_says_what_it_said) {
  expect_digest("gl_changed.inc", digest_of_changed_ops(), figures::changed_list_digest, "changed_list_digest");
}

TEST(op_list_test, each_row_of_the_wgl_list_says_what_it_said) {
  expect_digest("wgl_ops.inc", digest_of_wgl_ops(), figures::wgl_list_digest, "wgl_list_digest");
}

}  // namespace
