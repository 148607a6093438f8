#include "sequential/sequential_table.h"

#include "dispatch/alias.h"
#include "dispatch/no_context.h"
#include "sequential/broadcast.h"
#include "sequential/exceptions.h"

namespace {

template <class Op, class Result, class... Parameters>
Result broadcast_alias(Parameters... arguments) {
  return call_overridden<Op, Result>(&__osw_thread_state::seq_override, broadcast<typename Op::base>, arguments...);
}

// The driver's private ops are sent by the window's own code on this path.
template <class Op>
__osw_proc handler() {
  if constexpr (std::is_same_v<typename Op::base, driver_op>) {
    return __osw_void_stub;
  } else if constexpr (std::is_same_v<typename Op::base, none_op>) {
    return as_proc<Op>(broadcast<Op>);
  } else {
    return as_proc<Op>(broadcast_alias<Op>);
  }
}

}  // namespace

void __osw_fill_gl_table_seq() {
#define GL_OP(number, function, result, parameters, arguments, sync_mode, family, alias_of) \
  __osw_gl_table_seq[number] = handler<function##_op>();
#include "ops/gl_ops.inc"
#undef GL_OP
}
