#include "pipeline/idle.h"
#include "pipeline/push.h"
#include "pipeline/statistics.h"
#include "pipeline/threads.h"
#include "sequential/parts/switch.h"
#include "wgl/main_table.h"
#include "wgl/records/window_mapping.h"

namespace {

// Presents every part's child of the bound window. A pbuffer has nothing to present.
template <class Op, class... Planes>
BOOL swap_children(__osw_thread_state* state, Planes... planes) {
  BOOL result = 1;
  __osw_for_each_part(state, [&](i32 part) {
    if (!state->window_mapping) return;
    result &= sys_wgl<Op>(state)(state->window_mapping->parts[part].child_hdc, planes...);
  });
  return result & 1;
}

// The swap travels in the list with the frame's commands, as op 18 also with planes: every child gets a plain swap.
template <int count>
BOOL push_swap(__osw_thread_state* state, const u64 (&slots)[count]) {
  __osw_push_wgl_cmd(state, wglSwapBuffers_op::op, count, slots, 0);
  __osw_arm_idle_timer(state);
  return 1;
}

void count_frame(__osw_thread_state* state) {
  if (state->has_context) ++state->frame_count;
  if (__osw_print_sync_on_swap) __osw_print_sync_info(state);
}

// Whether the picture is in the application's own window: the thread has no workers, or its context has no children.
bool swaps_itself(const __osw_thread_state* state) {
  return !__osw_has_pipeline(state) || state->mode == mode_pass;
}

template <class Op, class... Planes>
BOOL swap(HDC hdc, Planes... planes) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  BOOL result;
  if (state->seq_path) {
    result = swap_children<Op>(state, planes...);
  } else if (swaps_itself(state)) {
    result = sys_wgl<Op>(state)(hdc, planes...);
  } else {
    result = push_swap(state, {to_slot(hdc), to_slot(planes)...});
  }
  count_frame(state);
  return result;
}

}  // namespace

template <>
BOOL wgl_main<wglSwapBuffers_op>(HDC hdc) {
  return swap<wglSwapBuffers_op>(hdc);
}

template <>
BOOL wgl_main<wglSwapLayerBuffers_op>(HDC hdc, UINT planes) {
  return swap<wglSwapLayerBuffers_op>(hdc, planes);
}
