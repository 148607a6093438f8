#include "dispatch/mode.h"
#include "pipeline/push.h"
#include "pipeline/statistics.h"
#include "pipeline/threads.h"
#include "startup/config/monitors.h"
#include "startup/config/options.h"
#include "startup/config/process_identity.h"
#include "wgl/child_moves.h"
#include "wgl/child_windows.h"
#include "wgl/context.h"
#include "wgl/context_profile.h"
#include "wgl/follow.h"
#include "wgl/geometry_commands.h"
#include "wgl/layout.h"
#include "wgl/main_table.h"
#include "wgl/records/glrc.h"
#include "wgl/records/pbuffer.h"
#include "wgl/records/window_mapping.h"

namespace {

// What a new binding draws to: one of the two, or nothing that has children.
struct drawable {
  __osw_pbuffer* pbuffer;
  __osw_window_mapping* window_mapping;  // with a use taken
};

void store_drawable(__osw_thread_state* state, const drawable& bound) {
  relaxed_store(state->pbuffer, bound.pbuffer);
  relaxed_store(state->window_mapping, bound.window_mapping);
}

// Child windows that hid the application's window when nothing of it reached a part are shown again with the first
// binding that does.
void set_children_hidden(__osw_window_mapping* mapping, bool hidden) {
  if (mapping->children_hidden == hidden) return;
  mapping->children_hidden = hidden;
  __osw_show_children(mapping, !hidden);
}

void show_application_window(HWND hwnd) {
  __osw_window_mapping* mapping = hwnd ? __osw_use_window_mapping(hwnd) : nullptr;
  if (!mapping) return;
  set_children_hidden(mapping, true);
  __osw_drop_window_mapping(mapping);
}

// While the parts showed the picture, the driver was told that nobody sees what this context draws, and may have drawn
// nothing. From now on the user looks at it.
void show_application_context(const __osw_thread_state* state, HWND hwnd) {
  auto* set_size = sys_gl<glDrawableSizeZ4_op>(state);
  RECT client{};
  if (set_size && GetClientRect(hwnd, &client)) set_size(client.right - client.left, client.bottom - client.top);
}

// A context or a drawable without children: the calls go to the system, and the application's own window shows the
// picture.
void bind_without_children(__osw_thread_state* state, HDC hdc, __osw_glrc* glrc) {
  const HWND hwnd = WindowFromDC(hdc);
  show_application_window(hwnd);
  store_drawable(state, {});
  relaxed_store(state->glrc, nullptr);
  __osw_bind_system(state);
  __osw_enter_pass_through(state);
  if (glrc && glrc->viewport_set) show_application_context(state, hwnd);
}

void choose_path(__osw_thread_state* state) {
  const bool can_switch = sys_wgl<wglFastSwitchContextZ4_op>(state) && sys_wgl<wglGetGLContextZ4_op>(state);
  if (OSW_DW_GLDispatchUseMtPath || !can_switch) return __osw_enter_threaded(state);
  auto* driver_context = sys_wgl<wglGetGLContextZ4_op>(state);
  __osw_glrc* glrc = state->glrc;
  glrc->app_gl_context = driver_context(glrc->app_hglrc);
  for (i32 part = 0; part < __osw_part_count; ++part) {
    glrc->child_gl_context[part] = driver_context(glrc->child_hglrc[part]);
  }
  __osw_enter_sequential(state);
}

// How far a binding came.
enum class outcome {
  refused,  // the window could not get its children: all is as before
  stopped,  // the drawable and the context are stored, but there is no pipeline for them
  complete,
};

outcome bind_with_children(__osw_thread_state* state, const drawable& bound, __osw_glrc* glrc, HANDLE thread) {
  store_drawable(state, bound);
  relaxed_store(state->glrc, glrc);
  if (bound.window_mapping) set_children_hidden(bound.window_mapping, false);
  if (!__osw_create_cmd_queue(state) || !__osw_start_threads(thread)) return outcome::stopped;
  state->thread_ctrl = static_cast<__osw_thread_ctrl*>(TlsGetValue(__osw_ctrl_slot));
  __osw_bind_system(state);
  note_profile(state, glrc);
  choose_path(state);
  return outcome::complete;
}

outcome bind(__osw_thread_state* state, HDC hdc, HGLRC hglrc, HANDLE thread) {
  keep_library_loaded();
  __osw_glrc* glrc = __osw_glrc_lookup(hglrc);
  drawable bound{hdc ? __osw_pbuffer_of_hdc(hdc) : nullptr, nullptr};
  if (glrc && !bound.pbuffer) {
    const HWND hwnd = WindowFromDC(hdc);
    if (!__osw_create_window_mapping(hwnd, hdc)) {
      relaxed_store(state->pbuffer, nullptr);
      return outcome::refused;
    }
    bound.window_mapping = __osw_use_window_mapping(hwnd);
  }
  if (glrc && (bound.pbuffer || bound.window_mapping)) return bind_with_children(state, bound, glrc, thread);
  bind_without_children(state, hdc, glrc);
  return outcome::complete;
}

void release(__osw_thread_state* state) {
  state->thread_ctrl = nullptr;
  store_drawable(state, {});
  relaxed_store(state->glrc, nullptr);
  __osw_enter_no_context(state);
}

void tell_parts(__osw_thread_state* state, HDC hdc, HGLRC hglrc) {
  __osw_reset_sync_info(state);
  take_missed_moves(state);
  __osw_relayout_intersect(state);
  if (__osw_has_pipeline(state)) {
    __osw_push_remembered_shares(state);
    const u64 binding[] = {to_slot(hdc), to_slot(hglrc)};
    __osw_push_wgl_cmd(state, wglMakeCurrent_op::op, 2, binding, 0);
  }
  __osw_relayout_split(state);
  __osw_send_initial_viewport(state, state->glrc);
  __osw_send_viewport_offset(state);
  __osw_send_drawable_size(state);
}

bool repeats_binding(const __osw_thread_state* state, HDC hdc, HGLRC hglrc) {
  return sys_wgl<wglGetCurrentDC_op>(state)() == hdc && sys_wgl<wglGetCurrentContext_op>(state)() == hglrc;
}

// Lets the library and the parts follow what the system has bound. `bind_context` does that for a context.
template <class Bind>
void follow_system(__osw_thread_state* state, HDC hdc, HGLRC hglrc, Bind bind_context) {
  // The workers may still be reading the mapping that this binding replaces, until they have taken the command below.
  __osw_window_mapping* replaced = state->window_mapping;
  outcome reached = outcome::complete;
  if (hglrc) {
    reached = bind_context();
  } else {
    release(state);
  }
  if (reached == outcome::complete) tell_parts(state, hdc, hglrc);
  if (reached != outcome::refused) __osw_drop_window_mapping(replaced);
}

BOOL bind_anew(__osw_thread_state* state, HDC hdc, HGLRC hglrc) {
  const HANDLE thread = GetCurrentThread();
  __osw_print_sync_info(state);
  state->current_hdc = hdc;
  state->current_hglrc = hglrc;
  const BOOL result = sys_wgl<wglMakeCurrent_op>(state)(hdc, hglrc);
  if (result) follow_system(state, hdc, hglrc, [=] { return bind(state, hdc, hglrc, thread); });
  return result;
}

// Whether the current context is one of those with children and bound without them.
bool is_bound_alone(const __osw_thread_state* state, HGLRC hglrc) {
  return hglrc && !state->glrc && __osw_glrc_lookup(hglrc);
}

}  // namespace

// A call that repeats the current binding returns FALSE and touches nothing.
BOOL wglMakeCurrent_op::handle(HDC hdc, HGLRC hglrc) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  return repeats_binding(state, hdc, hglrc) ? 0 : bind_anew(state, hdc, hglrc);
}

// A call that repeats the current binding succeeds, if that can still be drawn to. The system says so where it cannot,
// or where nothing is bound.
BOOL changed<wglMakeCurrent_op>::handle(HDC hdc, HGLRC hglrc) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  if (!repeats_binding(state, hdc, hglrc) || is_bound_alone(state, hglrc)) return bind_anew(state, hdc, hglrc);
  if (hglrc && is_drawable(hdc)) return 1;
  return sys_wgl<wglMakeCurrent_op>(state)(hdc, hglrc);
}

// The parts read what they draw: with another drawable to read from, the context is bound without them.
BOOL changed<wglMakeContextCurrentARB_op>::handle(HDC draw_hdc, HDC read_hdc, HGLRC hglrc) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  if (draw_hdc == read_hdc) return entry_in<wglMakeCurrent_op>(state->wgl_table)(draw_hdc, hglrc);
  __osw_print_sync_info(state);
  state->current_hdc = draw_hdc;
  state->current_hglrc = hglrc;
  const BOOL result = sys_wgl<wglMakeContextCurrentARB_op>(state)(draw_hdc, read_hdc, hglrc);
  if (!result) return result;
  follow_system(state, draw_hdc, hglrc, [=] {
    bind_without_children(state, draw_hdc, __osw_glrc_lookup(hglrc));
    return outcome::complete;
  });
  return result;
}
