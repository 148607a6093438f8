// The sequential path's general form of an op: the application's own thread repeats the call on every part.
#pragma once

#include <type_traits>

#include "sequential/parts/switch.h"

// What the op calls: the entry that an alias named, when one is borrowing this body, and else the system's own.
template <class Op>
inline typename Op::type* seq_target(const __osw_thread_state* state) {
  if (state->seq_override) return reinterpret_cast<typename Op::type*>(state->seq_override);
  return sys_gl<Op>(state);
}

// Calls the op with the same arguments on each part in ascending order, and returns the last part's result, or 0
// without parts. Ops that need more have a specialisation, declared in exceptions.h.
template <class Op, class Result, class... Parameters>
Result broadcast(Parameters... arguments) {
  const __osw_thread_state* state = __osw_fetch_thread_state();
  typename Op::type* target = seq_target<Op>(state);
  if constexpr (std::is_void_v<Result>) {
    __osw_for_each_part(state, [&](i32) { target(arguments...); });
  } else {
    Result result{};
    __osw_for_each_part(state, [&](i32) { result = target(arguments...); });
    return result;
  }
}
