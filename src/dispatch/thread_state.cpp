#include "dispatch/thread_state.h"

#include <cstdlib>

#include "dispatch/bypass.h"
#include "dispatch/path.h"
#include "dispatch/process_end.h"
#include "dispatch/report.h"
#include "dispatch/system.h"

DWORD __osw_state_slot;
DWORD __osw_ctrl_slot;
CRITICAL_SECTION __osw_thread_state_lock;
__osw_thread_state* __osw_thread_state_list[max_thread_states];

namespace {

// Puts `wanted` in the lowest slot that holds `present`.
void replace_in_list(const __osw_thread_state* present, __osw_thread_state* wanted) {
  enter_unless_process_ends(&__osw_thread_state_lock);
  for (__osw_thread_state*& slot : __osw_thread_state_list) {
    if (slot == present) {
      slot = wanted;
      break;
    }
  }
  leave_unless_process_ends(&__osw_thread_state_lock);
}

__osw_thread_state* make_state(void (*bind_wgl)(i32 first_use)) {
  auto* state = static_cast<__osw_thread_state*>(calloc(1, sizeof(__osw_thread_state)));
  if (!state) {
    __osw_report(severity_error, "no memory for the state of a thread\n");
    return nullptr;
  }
  state->thread_id = GetCurrentThreadId();
  bind_wgl(!state->wgl_bound);
  state->sys_wgl = __osw_sys_wgl;
  state->wgl_table = __osw_wgl_table_main;
  if (__osw_enable_wrapper_bypass) {
    state->wrapper_bypassed = 1;
    state->wgl_table = __osw_wgl_table_pass;
  }
  state->mode = mode_no_context;
  state->gl_table = __osw_gl_table_nocontext;
  state->path = &no_context_path;
  state->wgl_bound = 1;
  replace_in_list(nullptr, state);
  return state;
}

}  // namespace

__osw_thread_state* __osw_get_thread_state() {
  return make_state(__osw_bind_wgl);
}

__osw_thread_state* make_ending_thread_state() {
  return is_library_in_use() ? make_state(bind_wgl_unless_busy) : nullptr;
}

__osw_thread_state* __osw_store_new_thread_state() {
  __osw_thread_state* created = __osw_get_thread_state();
  if (!created) {
    __osw_bind_wgl(1);
    return shared_thread_state();
  }
  // Loading the system library can bring this thread back into the library, which has then made a state already.
  if (auto* present = static_cast<__osw_thread_state*>(TlsGetValue(__osw_state_slot))) {
    __osw_unlist_thread_state(created);
    free(created);
    return present;
  }
  TlsSetValue(__osw_state_slot, created);
  return created;
}

__osw_thread_state* shared_thread_state() {
  static constinit __osw_thread_state shared = {.wgl_bound = 1,
                                                .sys_wgl = __osw_sys_wgl,
                                                .wgl_table = __osw_wgl_table_pass,
                                                .gl_table = __osw_gl_table_nocontext,
                                                .path = &no_context_path};
  return &shared;
}

void __osw_unlist_thread_state(const __osw_thread_state* state) {
  replace_in_list(state, nullptr);
}
