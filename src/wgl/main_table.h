// The wgl handlers of an active process.
#pragma once

#include "ops/ops.h"

// The handler of an op whose row says `own`: the specialisation for its tag, found by the function's name in this
// folder.
template <class Op, class Result, class... Parameters>
Result wgl_main(Parameters... arguments);

#define WGL_OP(number, function, result, parameters, arguments, sync_mode, main_handler, pass_handler) \
  template <>                                                                                          \
  result wgl_main<function##_op> parameters;
#include "ops/wgl_ops.inc"
#undef WGL_OP

// Fills `__osw_wgl_table_main`. Process attach only.
void __osw_fill_wgl_table_main();
