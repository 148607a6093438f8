#include "ops/tables.h"

__osw_proc __osw_sys_wgl[wgl_op_count];
__osw_proc __osw_sys_gl[gl_op_count];

__osw_proc __osw_wgl_table_main[wgl_op_count];
__osw_proc __osw_wgl_table_pass[wgl_op_count];
__osw_proc __osw_gl_table_nocontext[gl_op_count];
__osw_proc __osw_gl_table_seq[gl_op_count];
__osw_proc __osw_gl_table_mt[gl_op_count];
__osw_proc __osw_gl_table_pass[gl_op_count];

#define WGL_OP(number, function, result, parameters, arguments, sync_mode, main, pass) #function,
const char* const __osw_wgl_names[] = {
#include "ops/wgl_ops.inc"
};
#undef WGL_OP

#define GL_OP(number, function, result, parameters, arguments, sync_mode, family, alias_of) #function,
const char* const __osw_gl_names[] = {
#include "ops/gl_ops.inc"
};
#undef GL_OP

// A row that is missing, doubled or out of place would shift every table behind it.
namespace {

#define WGL_OP(number, function, result, parameters, arguments, sync_mode, main, pass) number,
constexpr int wgl_numbers[] = {
#include "ops/wgl_ops.inc"
};
#undef WGL_OP

#define GL_OP(number, function, result, parameters, arguments, sync_mode, family, alias_of) number,
constexpr int gl_numbers[] = {
#include "ops/gl_ops.inc"
};
#undef GL_OP

template <int count>
constexpr bool in_order(const int (&numbers)[count]) {
  for (int i = 0; i < count; ++i) {
    if (numbers[i] != i) return false;
  }
  return true;
}

static_assert(in_order<wgl_op_count>(wgl_numbers));
static_assert(in_order<gl_op_count>(gl_numbers));

}  // namespace
