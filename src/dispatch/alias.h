// Calls of a base op's body with the arguments of an alias, whose prototype may name the same types otherwise:
// GLhandleARB for GLuint, another const on a pointer. The widths are equal, and checked.
#pragma once

#include <type_traits>

#include "dispatch/thread_state.h"

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

// An alias `Op` borrows the body of its base op: `override`, the word of the calling thread's state that the body looks
// into, names the entry that the application called for as long as the body runs. The thread has a context.
template <class Op, class Result, class... Arguments>
inline Result call_overridden(__osw_proc __osw_thread_state::*override, typename Op::base::type* body,
                              Arguments... arguments) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  state->*override = relaxed_load(state->sys_gl[Op::op]);
  if constexpr (std::is_void_v<Result>) {
    call_as_base(body, arguments...);
    state->*override = nullptr;
  } else {
    auto result = call_as_base(body, arguments...);
    state->*override = nullptr;
    return alias_argument<Result>(result);
  }
}
