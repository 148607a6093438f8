#include "threaded/threaded_table.h"

#include "ops/tables.h"
#include "threaded/encoders.h"

void __osw_fill_gl_table_mt() {
  for_each_gl_op([]<class Op>() { __osw_gl_table_mt[Op::op] = as_proc<Op>(encoder<Op>()); });
}
