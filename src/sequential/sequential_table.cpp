#include "sequential/sequential_table.h"

#include "dispatch/no_context.h"
#include "sequential/broadcast.h"

namespace {

// The driver's private ops are sent by the window's own code on this path.
template <class Op>
__osw_proc broadcast_proc() {
  if constexpr (std::is_same_v<typename Op::base, driver_op>) {
    return __osw_void_stub;
  } else if constexpr (!has_handlers<Op>) {
    return stub_of<Op>();
  } else {
    return as_proc<Op>(broadcaster<Op>());
  }
}

}  // namespace

void __osw_fill_gl_table_seq() {
  for_each_gl_form_in_use([]<class Op>() { __osw_gl_table_seq[Op::op] = broadcast_proc<Op>(); });
}
