// The handlers of ops that act on the thread's bound context: render to texture, and the swap interval.
#include "dispatch/path.h"
#include "dispatch/thread_state.h"
#include "wgl/main_table.h"

// The application's own pbuffer never gets the texture binding.
BOOL wglBindTexImageARB_op::handle(HPBUFFERARB hpbuffer, int buffer) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  return state->path->bind_tex_image(state, hpbuffer, buffer);
}

BOOL wglReleaseTexImageARB_op::handle(HPBUFFERARB hpbuffer, int buffer) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  return state->path->release_tex_image(state, hpbuffer, buffer);
}

BOOL wglSetPbufferAttribARB_op::handle(HPBUFFERARB hpbuffer, const int* attributes) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  const BOOL result = sys_wgl<wglSetPbufferAttribARB_op>(state)(hpbuffer, attributes);
  return result ? result & state->path->set_pbuffer_attributes(state, hpbuffer, attributes) : result;
}

BOOL wglSwapIntervalEXT_op::handle(int interval) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  const BOOL result = sys_wgl<wglSwapIntervalEXT_op>(state)(interval);
  return result & state->path->swap_interval(state, interval);
}
