#include "wgl/geometry_commands.h"

#include "pipeline/push.h"
#include "sequential/parts/switch.h"
#include "startup/config/options.h"
#include "wgl/records/glrc.h"
#include "wgl/records/window_mapping.h"

namespace {

// What the application's own context is told: nobody sees what it draws.
constexpr GLint unseen = -1;

struct size {
  i32 width;
  i32 height;
};

size client_size(const __osw_thread_state* state) {
  const RECT& client = state->window_mapping->client_rect;
  return {client.right - client.left, client.bottom - client.top};
}

template <class Op, int count>
void push(__osw_thread_state* state, const i32 (&arguments)[count]) {
  u64 slots[count];
  for (int i = 0; i < count; ++i) slots[i] = to_slot(arguments[i]);
  __osw_push_gl_cmd(state, Op::op, count, slots, 0);
}

}  // namespace

void __osw_send_viewport_offset(__osw_thread_state* state) {
  if (state->mode == mode_sequential) __osw_seq_send_viewport_offset(state);
  if (state->mode != mode_threaded || !state->window_mapping) return;
  // Placeholders: each worker takes its part's offset from the mapping at replay.
  push<glViewportOffsetZ4_op>(state, {0, 0});
}

void __osw_seq_send_viewport_offset(__osw_thread_state* state) {
  if (!state->seq_path || !state->window_mapping) return;
  __osw_for_each_part(state, [state](i32 part) {
    const __osw_child_part& child = state->window_mapping->parts[part];
    sys_gl<glViewportOffsetZ4_op>(state)(child.viewport_offset_x, child.viewport_offset_y);
  });
}

void __osw_send_drawable_size(__osw_thread_state* state) {
  if (state->mode != mode_threaded) return;
  if (state->window_mapping) {
    const size client = client_size(state);
    push<glDrawableSizeZ4_op>(state, {client.width, client.height});
  }
  if (OSW_DW_UseAppThreadToQueryState) sys_gl<glDrawableSizeZ4_op>(state)(unseen, unseen);
}

void __osw_seq_send_drawable_size(__osw_thread_state* state) {
  if (!state->seq_path || !state->window_mapping) return;
  const size client = client_size(state);
  sys_gl<glDrawableSizeZ4_op>(state)(unseen, unseen);
  __osw_for_each_part(state, [=](i32) { sys_gl<glDrawableSizeZ4_op>(state)(client.width, client.height); });
}

void __osw_send_initial_viewport(__osw_thread_state* state, __osw_glrc* glrc) {
  if (!glrc || glrc->viewport_set) return;
  if (state->mode == mode_sequential) __osw_seq_send_viewport(state);
  if (state->mode == mode_threaded && state->window_mapping) {
    const size client = client_size(state);
    push<glViewport_op>(state, {0, 0, client.width, client.height});
  }
  glrc->viewport_set = 1;
}

void __osw_seq_send_viewport(__osw_thread_state* state) {
  if (!state->window_mapping) return;
  const size client = client_size(state);
  __osw_for_each_part(state, [=](i32) { sys_gl<glViewport_op>(state)(0, 0, client.width, client.height); });
}
