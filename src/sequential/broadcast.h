// The sequential path's general form of an op: the application's own thread repeats the call on every part.
#pragma once

#include <type_traits>

#include "dispatch/alias.h"
#include "sequential/broadcast_names.h"
#include "sequential/parts/switch.h"

// What the op calls: the entry that an alias named, when one is borrowing this body, and else the system's own.
template <class Op>
inline typename Op::type* seq_target(const __osw_thread_state* state) {
  if (state->seq_override) return reinterpret_cast<typename Op::type*>(state->seq_override);
  return sys_gl<Op>(state);
}

// Calls the op with the same arguments on each part in ascending order, and returns the last part's result, or 0
// without parts.
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

// Calls the op on the first part alone.
template <class Op, class Result, class... Parameters>
Result call_on_first_part(Parameters... arguments) {
  const __osw_thread_state* state = __osw_fetch_thread_state();
  typename Op::type* target = seq_target<Op>(state);
  if (__osw_part_count > 0) __osw_switch_to_part(state, 0);
  if constexpr (std::is_void_v<Result>) {
    target(arguments...);
    __osw_switch_to_app(state);
  } else {
    const Result result = target(arguments...);
    __osw_switch_to_app(state);
    return result;
  }
}

// The form of what makes names. Result: the last part's, when the call returns it.
template <class Op, class Result, class... Parameters>
Result broadcast_names(Parameters... arguments) {
  const __osw_thread_state* state = __osw_fetch_thread_state();
  if constexpr (std::is_void_v<Result>) {
    broadcast_array_of_names<Op>(state, seq_target<Op>(state), arguments...);
  } else {
    return broadcast_name<Op>(state, seq_target<Op>(state), arguments...);
  }
}

// The general form of an op, for a handler of the op's own that also repeats the call.
template <class Op>
constexpr typename Op::type* repeat_on_each_part = broadcast<Op>;

template <class Op>
inline typename Op::type* broadcaster();

// Borrows the base op's body with the alias's own entry as its target.
template <class Op, class Result, class... Parameters>
Result broadcast_alias(Parameters... arguments) {
  return call_overridden<Op, Result>(&__osw_thread_state::seq_override, broadcaster<typename Op::base>(), arguments...);
}

// The function in `__osw_gl_table_seq`: the general form, a base op's, or name_op::broadcast where the row says `own`.
template <class Op>
inline typename Op::type* broadcaster() {
  if constexpr (Op::sequential::value == sequential_word::own) {
    return Op::broadcast;
  } else if constexpr (Op::sequential::value == sequential_word::first) {
    return call_on_first_part<Op>;
  } else if constexpr (Op::sequential::value == sequential_word::create) {
    return broadcast_names<Op>;
  } else if constexpr (std::is_same_v<typename Op::base, none_op>) {
    return broadcast<Op>;
  } else {
    return broadcast_alias<Op>;
  }
}
