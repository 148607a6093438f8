#include "dispatch/mode.h"

#include "dispatch/path.h"
#include "dispatch/system.h"

namespace {

bool is_extended() {
  return gl_ops_in_use > gl_op_count;
}

void enter(__osw_thread_state* state, i32 mode, const __osw_proc* gl_table, const path_work& path) {
  state->mode = mode;
  state->gl_table = gl_table;
  state->path = &path;
  state->has_context = mode != mode_no_context;
  state->seq_path = mode == mode_sequential;
}

}  // namespace

void __osw_bind_system(__osw_thread_state* state) {
  __osw_bind_wgl(!state->wgl_bound);
  relaxed_store(state->sys_wgl, __osw_sys_wgl);
  __osw_bind_gl();
  relaxed_store(state->sys_gl, __osw_sys_gl);
}

void __osw_enter_no_context(__osw_thread_state* state) {
  enter(state, mode_no_context, __osw_gl_table_nocontext, is_extended() ? finishing_no_context_path : no_context_path);
}

void __osw_enter_sequential(__osw_thread_state* state) {
  enter(state, mode_sequential, __osw_gl_table_seq, sequential_path);
}

void __osw_enter_threaded(__osw_thread_state* state) {
  enter(state, mode_threaded, __osw_gl_table_mt, is_extended() ? finishing_threaded_path : threaded_path);
}

void __osw_enter_pass_through(__osw_thread_state* state) {
  enter(state, mode_pass, __osw_gl_table_pass, pass_path);
}
