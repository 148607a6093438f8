// Calls of a base op's body with the arguments of an alias, whose prototype may name the same types otherwise:
// GLhandleARB for GLuint, another const on a pointer. The widths are equal, and checked.
#pragma once

#include <type_traits>

template <class To, class From>
inline To alias_argument(From value) {
  static_assert(sizeof(To) == sizeof(From));
  if constexpr (std::is_pointer_v<To>) {
    return (To)value;  // const may differ at any level
  } else {
    static_assert(std::is_integral_v<To> == std::is_integral_v<From>);
    return static_cast<To>(value);
  }
}

template <class BaseResult, class... BaseParameters, class... Arguments>
inline BaseResult call_as_base(BaseResult (*body)(BaseParameters...), Arguments... arguments) {
  static_assert(sizeof...(BaseParameters) == sizeof...(Arguments));
  return body(alias_argument<BaseParameters>(arguments)...);
}
