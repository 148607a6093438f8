#include "threaded/threaded_table.h"

#include "dispatch/no_context.h"
#include "ops/tables.h"
#include "threaded/encoders.h"

namespace {

template <class Op>
__osw_proc encoder_proc() {
  if constexpr (has_handlers<Op>) {
    return as_proc<Op>(encoder<Op>());
  } else {
    return stub_of<Op>();
  }
}

}  // namespace

void __osw_fill_gl_table_mt() {
  for_each_gl_form_in_use([]<class Op>() { __osw_gl_table_mt[Op::op] = encoder_proc<Op>(); });
}
