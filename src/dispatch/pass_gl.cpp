#include "dispatch/alias.h"
#include "dispatch/no_context.h"
#include "dispatch/pass_through.h"
#include "dispatch/thread_state.h"

namespace {

template <class Op, class Result, class... Parameters>
Result pass(Parameters... arguments) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  __osw_proc override = state->pass_override;
  auto* function = override ? reinterpret_cast<typename Op::type*>(override) : sys_gl<Op>(state);
  return function(arguments...);
}

template <class Op, class Result, class... Parameters>
Result pass_alias(Parameters... arguments) {
  return call_overridden<Op, Result>(&__osw_thread_state::pass_override, pass<typename Op::base>, arguments...);
}

template <class Op>
__osw_proc pass_proc() {
  if constexpr (std::is_same_v<typename Op::base, driver_op>) {
    return __osw_void_stub;
  } else if constexpr (std::is_same_v<typename Op::base, none_op>) {
    return as_proc<Op>(pass<Op>);
  } else {
    return as_proc<Op>(pass_alias<Op>);
  }
}

}  // namespace

void __osw_fill_gl_table_pass() {
  for_each_gl_op_in_use([]<class Op>() { __osw_gl_table_pass[Op::op] = pass_proc<Op>(); });
}
