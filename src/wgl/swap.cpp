#include "dispatch/path.h"
#include "dispatch/thread_state.h"
#include "pipeline/statistics.h"
#include "wgl/child_moves.h"
#include "wgl/main_table.h"

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

BOOL wglSwapLayerBuffers_op::handle(HDC hdc, UINT planes) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  take_missed_moves(state);
  const BOOL result = state->path->swap_layer(state, hdc, planes);
  count_frame(state);
  return result;
}
