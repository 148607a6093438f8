// What wgl functions do on the sequential path: they are repeated on every part, at once.
#include <algorithm>

#include "dispatch/path.h"
#include "pipeline/replay.h"
#include "sequential/parts/switch.h"
#include "wgl/records/pbuffer.h"
#include "wgl/records/window_mapping.h"

namespace {

void __osw_seq_send_viewport_offset(__osw_thread_state* state) {
  if (!state->window_mapping) return;
  __osw_for_each_part(state, [state](i32 part) {
    const __osw_child_part& child = state->window_mapping->parts[part];
    sys_gl<glViewportOffsetZ4_op>(state)(relaxed_load(child.viewport_offset_x), relaxed_load(child.viewport_offset_y));
  });
}

void __osw_seq_send_drawable_size(__osw_thread_state* state) {
  if (!state->window_mapping) return;
  const extent client = client_extent(state->window_mapping);
  sys_gl<glDrawableSizeZ4_op>(state)(unseen_size, unseen_size);
  __osw_for_each_part(state, [=](i32) { sys_gl<glDrawableSizeZ4_op>(state)(client.width, client.height); });
}

void __osw_seq_send_viewport(__osw_thread_state* state) {
  if (!state->window_mapping) return;
  const extent client = client_extent(state->window_mapping);
  __osw_for_each_part(state, [=](i32) { sys_gl<glViewport_op>(state)(0, 0, client.width, client.height); });
}

// Presents every part's child of the bound window. A pbuffer has nothing to present.
template <class Op, class... Planes>
BOOL swap_children(__osw_thread_state* state, HDC, Planes... planes) {
  BOOL result = 1;
  __osw_for_each_part(state, [&](i32 part) {
    if (!state->window_mapping) return;
    result &= sys_wgl<Op>(state)(relaxed_load(state->window_mapping->parts[part].child_hdc), planes...);
  });
  return result;
}

BOOL __osw_seq_swap_interval(__osw_thread_state* state, int interval) {
  BOOL result = 1;
  __osw_for_each_part(state, [&](i32) { result &= sys_wgl<wglSwapIntervalEXT_op>(state)(interval); });
  return result;
}

// Calls the system's entry on each part's own pbuffer. Result: 0 for a pbuffer without a record.
template <class Op, class Argument>
BOOL repeat_on_pbuffers(__osw_thread_state* state, HPBUFFERARB hpbuffer, Argument argument) {
  const __osw_pbuffer* pbuffer = find_pbuffer_or_warn(hpbuffer, Op::name);
  if (!pbuffer) return 0;
  BOOL result = 1;
  __osw_for_each_part(state,
                      [&](i32 part) { result &= sys_wgl<Op>(state)(pbuffer->parts[part].child_hpbuffer, argument); });
  return result;
}

void replay_on_each_part(__osw_thread_state* state, i32 op, const u64* slots, u32 count) {
  __osw_cmd cmd{};
  cmd.op = op;
  std::copy_n(slots, count, cmd.args);
  __osw_for_each_part(state, [&](i32 part) {
    cmd.args[count] = to_slot(part);
    __osw_replay_wgl(state, state->cmd_queue, state->sys_wgl, part, &cmd);
  });
}

}  // namespace

const path_work sequential_path = {
    .send_viewport_offset = __osw_seq_send_viewport_offset,
    .send_drawable_size = __osw_seq_send_drawable_size,
    .send_viewport = __osw_seq_send_viewport,
    .swap = swap_children<wglSwapBuffers_op>,
    .swap_layer = swap_children<wglSwapLayerBuffers_op>,
    .swap_interval = __osw_seq_swap_interval,
    .bind_tex_image = repeat_on_pbuffers<wglBindTexImageARB_op>,
    .release_tex_image = repeat_on_pbuffers<wglReleaseTexImageARB_op>,
    .set_pbuffer_attributes = repeat_on_pbuffers<wglSetPbufferAttribARB_op>,
    .replay_one_by_one = replay_on_each_part,
};
