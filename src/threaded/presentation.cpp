// What wgl functions do on the threaded path: they travel in the list with the GL calls around them. And what they do
// on no path, where workers may still have a list.
#include "dispatch/path.h"
#include "pipeline/idle.h"
#include "pipeline/threads.h"
#include "threaded/encode.h"
#include "wgl/records/pbuffer.h"
#include "wgl/records/window_mapping.h"

namespace {

// Placeholders: each worker takes its part's offset from the mapping at replay.
void push_viewport_offset(__osw_thread_state* state) {
  if (state->window_mapping) push<glViewportOffsetZ4_op>(state, 0, 0);
}

void push_drawable_size(__osw_thread_state* state) {
  if (state->window_mapping) {
    const extent client = client_extent(state->window_mapping);
    push<glDrawableSizeZ4_op>(state, client.width, client.height);
  }
  mirror<glDrawableSizeZ4_op>(state, unseen_size, unseen_size);
}

void push_viewport(__osw_thread_state* state) {
  if (!state->window_mapping) return;
  const extent client = client_extent(state->window_mapping);
  push<glViewport_op>(state, 0, 0, client.width, client.height);
}

void send_nothing(__osw_thread_state*) {}

template <class Op, class... Arguments>
void push_wgl(__osw_thread_state* state, Arguments... arguments) {
  const u64 slots[] = {to_slot(arguments)...};
  __osw_push_wgl_cmd(state, Op::op, sizeof...(Arguments), slots, 0);
}

// The swap travels in the list with the frame's commands, as op 18 also with planes: every child gets a plain swap.
template <class... Planes>
BOOL push_swap(__osw_thread_state* state, HDC hdc, Planes... planes) {
  push_wgl<wglSwapBuffers_op>(state, hdc, planes...);
  __osw_arm_idle_timer(state);
  return 1;
}

template <class Op, class... Planes>
BOOL swap_itself(__osw_thread_state* state, HDC hdc, Planes... planes) {
  return sys_wgl<Op>(state)(hdc, planes...);
}

template <class Op, class... Planes>
BOOL swap_without_context(__osw_thread_state* state, HDC hdc, Planes... planes) {
  return __osw_has_pipeline(state) ? push_swap(state, hdc, planes...) : swap_itself<Op>(state, hdc, planes...);
}

BOOL push_swap_interval(__osw_thread_state* state, int interval) {
  if (__osw_has_pipeline(state)) push_wgl<wglSwapIntervalEXT_op>(state, interval);
  return answered_later;
}

// The replay looks the pbuffer up again, and calls nothing when it has no record.
template <class Op, class Argument>
void push_on_pbuffer(__osw_thread_state* state, HPBUFFERARB hpbuffer, Argument argument) {
  find_pbuffer_or_warn(hpbuffer, Op::name);
  push_wgl<Op>(state, hpbuffer, argument);
}

template <class Op>
BOOL push_tex_image(__osw_thread_state* state, HPBUFFERARB hpbuffer, int buffer) {
  if (!__osw_has_pipeline(state)) return 0;
  push_on_pbuffer<Op>(state, hpbuffer, buffer);
  return 1;
}

BOOL push_pbuffer_attributes(__osw_thread_state* state, HPBUFFERARB hpbuffer, const int* attributes) {
  if (__osw_has_pipeline(state)) push_on_pbuffer<wglSetPbufferAttribARB_op>(state, hpbuffer, attributes);
  return answered_later;
}

}  // namespace

const path_work threaded_path = {
    .send_viewport_offset = push_viewport_offset,
    .send_drawable_size = push_drawable_size,
    .send_viewport = push_viewport,
    .swap = push_swap,
    .swap_layer = push_swap,
    .swap_interval = push_swap_interval,
    .bind_tex_image = push_tex_image<wglBindTexImageARB_op>,
    .release_tex_image = push_tex_image<wglReleaseTexImageARB_op>,
    .set_pbuffer_attributes = push_pbuffer_attributes,
};

const path_work no_context_path = {
    .send_viewport_offset = send_nothing,
    .send_drawable_size = send_nothing,
    .send_viewport = send_nothing,
    .swap = swap_without_context<wglSwapBuffers_op>,
    .swap_layer = swap_without_context<wglSwapLayerBuffers_op>,
    .swap_interval = push_swap_interval,
    .bind_tex_image = push_tex_image<wglBindTexImageARB_op>,
    .release_tex_image = push_tex_image<wglReleaseTexImageARB_op>,
    .set_pbuffer_attributes = push_pbuffer_attributes,
};

const path_work pass_path = {
    .send_viewport_offset = send_nothing,
    .send_drawable_size = send_nothing,
    .send_viewport = send_nothing,
    .swap = swap_itself<wglSwapBuffers_op>,
    .swap_layer = swap_itself<wglSwapLayerBuffers_op>,
    .swap_interval = push_swap_interval,
    .bind_tex_image = push_tex_image<wglBindTexImageARB_op>,
    .release_tex_image = push_tex_image<wglReleaseTexImageARB_op>,
    .set_pbuffer_attributes = push_pbuffer_attributes,
};
