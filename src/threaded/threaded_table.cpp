#include "threaded/threaded_table.h"

#include "ops/tables.h"
#include "threaded/encoders.h"

void __osw_fill_gl_table_mt() {
#define GL_OP(number, function, result, parameters, arguments, sync_mode, family, alias_of) \
  __osw_gl_table_mt[number] = as_proc<function##_op>(encoder<function##_op>());
#include "ops/gl_ops.inc"
#undef GL_OP
}
