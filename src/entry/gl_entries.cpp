// The GL entry points. Each knows its op and nothing else: it jumps through the calling thread's table with the
// arguments as they came. The names carry a prefix, because the public headers declare the plain ones as imports.
#include "dispatch/thread_state.h"

#define GL_OP(number, function, result, parameters, arguments, sync_mode, family, alias_of) \
  extern "C" result osw_##function parameters {                                             \
    return entry_in<function##_op>(__osw_fetch_thread_state()->gl_table) arguments;         \
  }
#include "ops/gl_ops.inc"
#undef GL_OP

#define GL_OP(number, function, result, parameters, arguments, sync_mode, family, alias_of) \
  reinterpret_cast<__osw_proc>(osw_##function),
const __osw_proc __osw_gl_entries[gl_op_count] = {
#include "ops/gl_ops.inc"
};
#undef GL_OP
