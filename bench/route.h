// Where a measured call goes: to the system's library, or to ours. The calls themselves are the same.
#pragma once

#include "ops/ops.h"

struct route {
  // The entry of an op, or null when there is none. A context is current.
  __osw_proc (*entry)(int op, const char* name);
};

template <class Op>
typename Op::type* call_of(const route& through) {
  return reinterpret_cast<typename Op::type*>(through.entry(Op::op, Op::name));
}
