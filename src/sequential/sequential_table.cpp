#include "sequential/sequential_table.h"

#include "dispatch/alias.h"
#include "dispatch/no_context.h"
#include "sequential/broadcast.h"
#include "sequential/exceptions.h"

namespace {

// Borrows the base op's body and makes it call the entry that the application named.
template <class Op, class Result, class... Parameters>
Result broadcast_alias(Parameters... arguments) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  state->seq_override = relaxed_load(state->sys_gl[Op::op]);
  typename Op::base::type* body = broadcast<typename Op::base>;
  if constexpr (std::is_void_v<Result>) {
    call_as_base(body, arguments...);
    state->seq_override = nullptr;
  } else {
    auto result = call_as_base(body, arguments...);
    state->seq_override = nullptr;
    return alias_argument<Result>(result);
  }
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
