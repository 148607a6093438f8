// The wgl entry points, made like the GL ones, and the exports that belong to neither list.
#include "dispatch/no_context.h"
#include "dispatch/thread_state.h"
#include "ops/entry_table.h"

#define WGL_OP(number, function, sync, main, pass, replay, result, parameters, arguments) \
  extern "C" result osw_##function parameters {                                           \
    return entry_in<function##_op>(__osw_fetch_thread_state()->wgl_table) arguments;      \
  }                                                                                       \
  template <>                                                                             \
  constexpr function##_op::type* entry_point<function##_op> = osw_##function;
#include "ops/wgl_ops.inc"
#undef WGL_OP

const __osw_proc (&__osw_wgl_entries)[wgl_op_count] = entry_table<wgl_op_list>::entries;

// Makes the calling thread's state. The result is the state, or, when this call had to make it, what storing it
// returned.
extern "C" u64 osw_glDebugEntry() {
  if (void* state = TlsGetValue(__osw_state_slot)) return reinterpret_cast<u64>(state);
  return static_cast<u64>(TlsSetValue(__osw_state_slot, __osw_get_thread_state()));
}

// All six metafile entries of the platform's library, which have no effect in any mode.
extern "C" void osw_Glmf() {
  __osw_void_stub();
}
