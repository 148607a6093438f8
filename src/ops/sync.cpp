#include "ops/tables.h"

u32 __osw_wgl_sync_flags[wgl_op_count];
u32 __osw_gl_sync_flags[gl_op_count];
const char* __osw_wgl_op_names[wgl_op_count];
const char* __osw_gl_op_names[gl_op_count];
u32 __osw_wgl_sync_filled;
u32 __osw_gl_sync_filled;

namespace {

// Flag and name go together: only an op that can make the issuing thread wait is ever counted and printed.
template <class Op>
void mark(u32* flags, const char** labels, const char* label) {
  if constexpr (Op::sync == op_sync::sync) {
    flags[Op::op] = 1;
    labels[Op::op] = label;
  }
}

}  // namespace

void __osw_fill_wgl_sync() {
#define WGL_OP(number, function, result, parameters, arguments, sync_mode, main, pass) \
  mark<function##_op>(__osw_wgl_sync_flags, __osw_wgl_op_names, "__osw_" #function "_op");
#include "ops/wgl_ops.inc"
#undef WGL_OP
  __osw_wgl_sync_filled = 1;
}

void __osw_fill_gl_sync() {
#define GL_OP(number, function, result, parameters, arguments, sync_mode, family, alias_of) \
  mark<function##_op>(__osw_gl_sync_flags, __osw_gl_op_names, "__osw_" #function "_op");
#include "ops/gl_ops.inc"
#undef GL_OP
  __osw_gl_sync_filled = 1;
}
