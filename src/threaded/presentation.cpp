// What wgl functions do on the threaded path: they travel in the list with the GL calls around them. And what they do
// on no path, where workers may still have a list.
#include "dispatch/path.h"
#include "pipeline/flush.h"
#include "pipeline/threads.h"
#include "startup/config/monitors.h"
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
  return 1;
}

// The frame is on its way at once, for the program may have nothing more to say.
template <class... Planes>
BOOL push_swap_and_finish(__osw_thread_state* state, HDC hdc, Planes... planes) {
  push_swap(state, hdc, planes...);
  finish_list(state);
  return 1;
}

template <class Op, class... Planes>
BOOL swap_itself(__osw_thread_state* state, HDC hdc, Planes... planes) {
  return sys_wgl<Op>(state)(hdc, planes...);
}

template <class Op, auto push, class... Planes>
BOOL swap_without_context(__osw_thread_state* state, HDC hdc, Planes... planes) {
  return __osw_has_pipeline(state) ? push(state, hdc, planes...) : swap_itself<Op>(state, hdc, planes...);
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

void push_one_by_one(__osw_thread_state* state, i32 op, const u64* slots, u32 count) {
  for (i32 part = 0; part < __osw_part_count; ++part) {
    begin_cmd(state)->args[count] = to_slot(part);
    __osw_push_wgl_cmd(state, op, count, slots, 0);
  }
}

void replay_nowhere(__osw_thread_state*, i32, const u64*, u32) {}

using swap_work = decltype(path_work::swap);
using swap_layer_work = decltype(path_work::swap_layer);

constexpr path_work work_in_a_list(swap_work swap, swap_layer_work swap_layer) {
  return {
      .send_viewport_offset = push_viewport_offset,
      .send_drawable_size = push_drawable_size,
      .send_viewport = push_viewport,
      .swap = swap,
      .swap_layer = swap_layer,
      .swap_interval = push_swap_interval,
      .bind_tex_image = push_tex_image<wglBindTexImageARB_op>,
      .release_tex_image = push_tex_image<wglReleaseTexImageARB_op>,
      .set_pbuffer_attributes = push_pbuffer_attributes,
      .replay_one_by_one = push_one_by_one,
  };
}

constexpr path_work work_on_no_path(swap_work swap, swap_layer_work swap_layer) {
  path_work work = work_in_a_list(swap, swap_layer);
  work.send_viewport_offset = work.send_drawable_size = work.send_viewport = send_nothing;
  work.replay_one_by_one = replay_nowhere;
  return work;
}

}  // namespace

const path_work threaded_path = work_in_a_list(push_swap, push_swap);
const path_work finishing_threaded_path = work_in_a_list(push_swap_and_finish, push_swap_and_finish);

const path_work no_context_path = work_on_no_path(swap_without_context<wglSwapBuffers_op, push_swap<>>,
                                                  swap_without_context<wglSwapLayerBuffers_op, push_swap<UINT>>);
const path_work finishing_no_context_path =
    work_on_no_path(swap_without_context<wglSwapBuffers_op, push_swap_and_finish<>>,
                    swap_without_context<wglSwapLayerBuffers_op, push_swap_and_finish<UINT>>);

const path_work pass_path = work_on_no_path(swap_itself<wglSwapBuffers_op>, swap_itself<wglSwapLayerBuffers_op>);
