#include "dispatch/path.h"
#include "dispatch/thread_state.h"
#include "pipeline/statistics.h"
#include "wgl/child_moves.h"
#include "wgl/main_table.h"
#include "wgl/records/pbuffer.h"

namespace {

void count_frame(__osw_thread_state* state) {
  if (state->has_context) ++state->frame_count;
  if (__osw_print_sync_on_swap) __osw_print_sync_info(state);
}

}  // namespace

BOOL wglSwapBuffers_op::handle(HDC hdc) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  take_missed_moves(state);
  const BOOL result = state->path->swap(state, hdc);
  count_frame(state);
  return result;
}

// What cannot be swapped the system refuses, with the reason.
BOOL changed<wglSwapBuffers_op>::handle(HDC hdc) {
  if (is_drawable(hdc)) return wglSwapBuffers_op::handle(hdc);
  return sys_wgl<wglSwapBuffers_op>(__osw_fetch_thread_state())(hdc);
}

BOOL changed<wglSwapLayerBuffers_op>::handle(HDC hdc, UINT planes) {
  if (is_drawable(hdc)) return wglSwapLayerBuffers_op::handle(hdc, planes);
  return sys_wgl<wglSwapLayerBuffers_op>(__osw_fetch_thread_state())(hdc, planes);
}

BOOL wglSwapLayerBuffers_op::handle(HDC hdc, UINT planes) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  take_missed_moves(state);
  const BOOL result = state->path->swap_layer(state, hdc, planes);
  count_frame(state);
  return result;
}
