#include "dispatch/report.h"
#include "pipeline/replay.h"
#include "pipeline/replay_case.h"
#include "wgl/records/glrc.h"
#include "wgl/records/pbuffer.h"
#include "wgl/records/window_mapping.h"

namespace {

// As gl_cases.
replay_case wgl_cases[wgl_op_count];

// The part's own drawable under the binding that the issuing thread has set, or null when it has none.
HDC child_hdc(const __osw_thread_state* state, i32 part) {
  if (const __osw_pbuffer* pbuffer = relaxed_load(state->pbuffer)) return relaxed_load(pbuffer->parts[part].child_hdc);
  const __osw_window_mapping* mapping = relaxed_load(state->window_mapping);
  return mapping ? relaxed_load(mapping->parts[part].child_hdc) : nullptr;
}

// The record behind a handle that a command carries, or null. Whoever pushed the command has reported a handle without
// one.
const __osw_glrc* record_of(HGLRC hglrc) {
  return hglrc ? __osw_glrc_lookup(hglrc) : nullptr;
}

void warn_of_other_hdc(HDC hdc, const __osw_window_mapping* mapping, const char* function) {
  if (mapping->app_hdc == hdc) return;
  // The text names a window where the device context is printed; the third figure repeats the device context.
  __osw_report(severity_warning,
               "for hwnd = 0x%p, the hdc (0x%p) used in %s is not the same as the hdc (0x%p) used in wglMakeCurrent.\n",
               static_cast<void*>(hdc), static_cast<void*>(mapping->app_hdc), function, static_cast<void*>(hdc));
}

// Presents the part's child of the window that the command's device context belongs to.
template <class Op, class... Planes>
BOOL swap_child(const replay_scene& on, HDC hdc, Planes... planes) {
  const HWND hwnd = WindowFromDC(hdc);
  if (!hwnd) {
    __osw_report(severity_warning, "hdc (0x%p) parameter in %s is not a valid window hdc.\n", static_cast<void*>(hdc),
                 Op::name);
    return 0;
  }
  // The window's own thread may be destroying it.
  __osw_window_mapping* mapping = __osw_use_window_mapping(hwnd);
  if (!mapping) return 0;
  warn_of_other_hdc(hdc, mapping, Op::name);
  const BOOL swapped = entry_in<Op>(on.system)(relaxed_load(mapping->parts[on.part].child_hdc), planes...);
  __osw_drop_window_mapping(mapping);
  return swapped;
}

// Calls the system's entry with the part's own pbuffer in the place of the command's.
template <class Op, class Argument>
BOOL call_on_child_pbuffer(const replay_scene& on, HPBUFFERARB hpbuffer, Argument argument) {
  const __osw_pbuffer* pbuffer = hpbuffer ? __osw_pbuffer_lookup(hpbuffer) : nullptr;
  return pbuffer ? entry_in<Op>(on.system)(relaxed_load(pbuffer->parts[on.part].child_hpbuffer), argument) : 0;
}

}  // namespace

// The drawable and the context come from the issuing thread's state, which set them before the push. A binding without
// children, a context that has no record, releases what the worker had.
BOOL wglMakeCurrent_op::replay(const replay_scene& on, HDC, HGLRC hglrc) {
  auto* make_current = entry_in<wglMakeCurrent_op>(on.system);
  const __osw_glrc* glrc = relaxed_load(on.state->glrc);
  const HDC hdc = child_hdc(on.state, on.part);
  if (!hglrc || !glrc || !hdc) return make_current(nullptr, nullptr);
  return make_current(hdc, relaxed_load(glrc->child_hglrc[on.part]));
}

BOOL wglShareLists_op::replay(const replay_scene& on, HGLRC first, HGLRC second) {
  const __osw_glrc* from = record_of(first);
  const __osw_glrc* to = record_of(second);
  if (!from || !to) return 0;
  return entry_in<wglShareLists_op>(on.system)(relaxed_load(from->child_hglrc[on.part]),
                                               relaxed_load(to->child_hglrc[on.part]));
}

BOOL wglSwapBuffers_op::replay(const replay_scene& on, HDC hdc) {
  return swap_child<wglSwapBuffers_op>(on, hdc);
}

BOOL wglSwapLayerBuffers_op::replay(const replay_scene& on, HDC hdc, UINT planes) {
  return swap_child<wglSwapLayerBuffers_op>(on, hdc, planes);
}

BOOL wglBindTexImageARB_op::replay(const replay_scene& on, HPBUFFERARB hpbuffer, int buffer) {
  return call_on_child_pbuffer<wglBindTexImageARB_op>(on, hpbuffer, buffer);
}

BOOL wglReleaseTexImageARB_op::replay(const replay_scene& on, HPBUFFERARB hpbuffer, int buffer) {
  return call_on_child_pbuffer<wglReleaseTexImageARB_op>(on, hpbuffer, buffer);
}

BOOL wglSetPbufferAttribARB_op::replay(const replay_scene& on, HPBUFFERARB hpbuffer, const int* attributes) {
  return call_on_child_pbuffer<wglSetPbufferAttribARB_op>(on, hpbuffer, attributes);
}

void fill_wgl_cases() {
  for_each_wgl_form_in_use([]<class Op>() { wgl_cases[Op::op] = case_of<Op>(); });
}

void __osw_replay_wgl(__osw_thread_state* state, __osw_cmd_queue*, const __osw_proc* sys_wgl, i32 part,
                      __osw_cmd* cmd) {
  if (static_cast<u32>(cmd->op) >= static_cast<u32>(wgl_op_count)) return;
  if (const replay_case replay = wgl_cases[cmd->op]) replay(state, sys_wgl, part, cmd);
}
