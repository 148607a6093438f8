// From the slots of a record to a call: each at the type that an op's prototype has for it.
#pragma once

#include <utility>

#include "ops/ops.h"
#include "pipeline/cmd.h"

template <class Result, class... Parameters, class Call, size_t... slot>
inline u64 call_with(Result (*)(Parameters...), const u64* args, Call call, std::index_sequence<slot...>) {
  if constexpr (std::is_void_v<Result>) {
    call(from_slot<Parameters>(args[slot])...);
    return 0;
  } else {
    return to_slot(call(from_slot<Parameters>(args[slot])...));
  }
}

// Calls `call` with a record's slots at the types of the op's parameters.
template <class Op, class Call>
inline u64 call_with_slots(const u64* args, Call call) {
  return call_with(static_cast<typename Op::type*>(nullptr), args, call,
                   std::make_index_sequence<parameter_count<Op>>());
}
