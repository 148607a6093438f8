// The GL entry points. Each knows its op and nothing else: it jumps through the calling thread's table with the
// arguments as they came. The names carry a prefix, because the public headers declare the plain ones as imports.
#include "dispatch/thread_state.h"
#include "ops/entry_table.h"

#define GL_OP(number, function, sync, threaded, sequential, replay, alias, payload, result, parameters, arguments) \
  extern "C" result osw_##function parameters {                                                                    \
    return entry_in<function##_op>(__osw_fetch_thread_state()->gl_table) arguments;                                \
  }                                                                                                                \
  template <>                                                                                                      \
  constexpr function##_op::type* entry_point<function##_op> = osw_##function;
#include "ops/gl_ops.inc"
#include "ops/gl_wide.inc"
#undef GL_OP

const __osw_proc (&__osw_gl_entries)[gl_all_count] = entry_table<gl_all_list>::entries;
