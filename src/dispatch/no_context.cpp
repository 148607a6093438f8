#include "dispatch/no_context.h"

#include "ops/tables.h"

void __osw_void_stub() {}

GLboolean __osw_false_stub() {
  return 0;
}

u64 __osw_zero_stub() {
  return 0;
}

void __osw_fill_gl_table_nocontext() {
  for_each_gl_op_in_use([]<class Op>() { __osw_gl_table_nocontext[Op::op] = stub_of<Op>(); });
}
