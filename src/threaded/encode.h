// The general encoders of the threaded path. An encoder runs the call on the application's own context, which stays
// current on the issuing thread (the mirror call), turns it into one command for every part's worker, and gives the
// application its result. Each has the signature of its GL function, and runs on the issuing thread alone.
#pragma once

#include <cstring>
#include <type_traits>

#include "pipeline/push.h"
#include "startup/config/options.h"

// Whether the application's own context follows every call, so that queries can be answered there.
inline bool mirrors() {
  return OSW_DW_UseAppThreadToQueryState != 0;
}

template <class Op, class... Parameters>
inline void mirror(const __osw_thread_state* state, Parameters... arguments) {
  if (mirrors()) sys_gl<Op>(state)(arguments...);
}

// Appends the op's command. `blob_mask` names the slots that hold heap blocks.
template <class Op, class... Parameters>
inline void push_with_blobs(__osw_thread_state* state, u32 blob_mask, Parameters... arguments) {
  const u64 slots[sizeof...(Parameters) + 1] = {to_slot(arguments)...};
  __osw_push_gl_cmd(state, Op::op, sizeof...(Parameters), slots, blob_mask);
}

template <class Op, class... Parameters>
inline void push(__osw_thread_state* state, Parameters... arguments) {
  push_with_blobs<Op>(state, 0, arguments...);
}

// What the latest replay returned, at the width of the function's result. Valid once a synchronous push has returned.
template <class Result>
inline Result last_result(const __osw_thread_state* state) {
  return from_slot<Result>(relaxed_load(state->cmd_queue->last_result));
}

// Scalars, and pointers as they came: either the op is synchronous, or nobody reads through them.
template <class Op, class Result, class... Parameters>
Result encode_plain(Parameters... arguments) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  if constexpr (std::is_void_v<Result>) {
    mirror<Op>(state, arguments...);
    push<Op>(state, arguments...);
  } else {
    if (!mirrors()) {
      push<Op>(state, arguments...);
      return last_result<Result>(state);
    }
    const Result result = sys_gl<Op>(state)(arguments...);
    push<Op>(state, arguments...);
    return result;
  }
}

// Answered by the application's own context without a command, or by the workers when that context does not follow.
template <class Op, class Result, class... Parameters>
Result encode_query(Parameters... arguments) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  if (mirrors()) return sys_gl<Op>(state)(arguments...);
  push<Op>(state, arguments...);
  if constexpr (!std::is_void_v<Result>) return last_result<Result>(state);
}

// The application's own context alone, whether it follows other calls or not: what it tells comes on the program's
// thread.
template <class Op, class Result, class... Parameters>
Result encode_app_only(Parameters... arguments) {
  return sys_gl<Op>(__osw_fetch_thread_state())(arguments...);
}

// Copies `bytes` from `data` into the record's slots from `slot` on. A null `data` zeroes that one slot. Result: the
// address of the slot, which is valid until the record has been replayed.
inline void* put_in_record(__osw_cmd* cmd, u32 slot, const void* data, u64 bytes) {
  if (data) {
    memcpy(&cmd->args[slot], data, bytes);
  } else {
    cmd->args[slot] = 0;
  }
  return &cmd->args[slot];
}

// Replaces a pointer by the address of its copy in the record; any other argument stays. `slot` is where the next copy
// goes.
template <class T>
inline T argument_in_record(__osw_cmd* cmd, u32* slot, u32 elements, T argument) {
  if constexpr (std::is_pointer_v<T>) {
    const void* copy = put_in_record(cmd, *slot, argument, elements * sizeof *argument);
    *slot += elements;
    return static_cast<T>(copy);
  } else {
    return argument;
  }
}

// Vectors that are small enough to travel in the record, so that immediate mode allocates nothing. The first stands
// behind the parameters; a second has room behind it for elements of any width.
template <class Op, class... Parameters>
inline void push_copied(__osw_thread_state* state, const record_payload& payload, Parameters... arguments) {
  __osw_cmd* cmd = begin_cmd(state);
  u32 slot = sizeof...(Parameters);
  const u64 slots[] = {to_slot(argument_in_record(cmd, &slot, payload.elements, arguments))...};
  __osw_push_gl_cmd(state, Op::op, sizeof...(Parameters), slots, 0);
}
