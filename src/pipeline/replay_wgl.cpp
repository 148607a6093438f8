#include "dispatch/report.h"
#include "pipeline/replay.h"
#include "wgl/records/glrc.h"
#include "wgl/records/pbuffer.h"
#include "wgl/records/window_mapping.h"

namespace {

// The part's own drawable under the binding that the issuing thread has set, or null when it has none.
HDC child_hdc(const __osw_thread_state* state, i32 part) {
  if (const __osw_pbuffer* pbuffer = relaxed_load(state->pbuffer)) return relaxed_load(pbuffer->parts[part].child_hdc);
  const __osw_window_mapping* mapping = relaxed_load(state->window_mapping);
  return mapping ? relaxed_load(mapping->parts[part].child_hdc) : nullptr;
}

// The drawable and the context come from the issuing thread's state, which set them before the push. A binding without
// children, a context that has no record, releases what the worker had.
void replay_make_current(const __osw_thread_state* state, const __osw_proc* sys_wgl, i32 part, const __osw_cmd* cmd) {
  auto* make_current = entry_in<wglMakeCurrent_op>(sys_wgl);
  const __osw_glrc* glrc = relaxed_load(state->glrc);
  const HDC hdc = child_hdc(state, part);
  if (!cmd->args[1] || !glrc || !hdc) {
    make_current(nullptr, nullptr);
  } else {
    make_current(hdc, relaxed_load(glrc->child_hglrc[part]));
  }
}

// The record behind a handle that a command carries, or null. Whoever pushed the command has reported a handle without
// one.
const __osw_glrc* glrc_in(u64 slot) {
  const auto hglrc = from_slot<HGLRC>(slot);
  return hglrc ? __osw_glrc_lookup(hglrc) : nullptr;
}

void replay_share_lists(const __osw_proc* sys_wgl, i32 part, const __osw_cmd* cmd) {
  const __osw_glrc* first = glrc_in(cmd->args[0]);
  const __osw_glrc* second = glrc_in(cmd->args[1]);
  if (!first || !second) return;
  entry_in<wglShareLists_op>(sys_wgl)(relaxed_load(first->child_hglrc[part]), relaxed_load(second->child_hglrc[part]));
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
void swap_child(const __osw_proc* sys_wgl, i32 part, const __osw_cmd* cmd, Planes... planes) {
  const HDC hdc = from_slot<HDC>(cmd->args[0]);
  const HWND hwnd = WindowFromDC(hdc);
  if (!hwnd) {
    __osw_report(severity_warning, "hdc (0x%p) parameter in %s is not a valid window hdc.\n", static_cast<void*>(hdc),
                 Op::name);
    return;
  }
  // The window's own thread may be destroying it.
  __osw_window_mapping* mapping = __osw_use_window_mapping(hwnd);
  if (!mapping) return;
  warn_of_other_hdc(hdc, mapping, Op::name);
  entry_in<Op>(sys_wgl)(mapping->parts[part].child_hdc, planes...);
  __osw_drop_window_mapping(mapping);
}

// Calls the system's entry with the part's own pbuffer in the place of the command's.
template <class Op, class Argument>
void call_on_child_pbuffer(const __osw_proc* sys_wgl, i32 part, const __osw_cmd* cmd) {
  const auto hpbuffer = from_slot<HPBUFFERARB>(cmd->args[0]);
  const __osw_pbuffer* pbuffer = hpbuffer ? __osw_pbuffer_lookup(hpbuffer) : nullptr;
  if (!pbuffer) return;
  entry_in<Op>(sys_wgl)(relaxed_load(pbuffer->parts[part].child_hpbuffer), from_slot<Argument>(cmd->args[1]));
}

}  // namespace

void __osw_replay_wgl(__osw_thread_state* state, __osw_cmd_queue*, const __osw_proc* sys_wgl, i32 part,
                      const __osw_cmd* cmd) {
  switch (cmd->op) {
    case wglMakeCurrent_op::op:
      return replay_make_current(state, sys_wgl, part, cmd);
    case wglShareLists_op::op:
      return replay_share_lists(sys_wgl, part, cmd);
    case wglSwapBuffers_op::op:
      return swap_child<wglSwapBuffers_op>(sys_wgl, part, cmd);
    case wglSwapLayerBuffers_op::op:
      return swap_child<wglSwapLayerBuffers_op>(sys_wgl, part, cmd, from_slot<UINT>(cmd->args[1]));
    case wglBindTexImageARB_op::op:
      return call_on_child_pbuffer<wglBindTexImageARB_op, int>(sys_wgl, part, cmd);
    case wglReleaseTexImageARB_op::op:
      return call_on_child_pbuffer<wglReleaseTexImageARB_op, int>(sys_wgl, part, cmd);
    case wglSetPbufferAttribARB_op::op:
      return call_on_child_pbuffer<wglSetPbufferAttribARB_op, const int*>(sys_wgl, part, cmd);
    case wglSwapIntervalEXT_op::op:
      entry_in<wglSwapIntervalEXT_op>(sys_wgl)(from_slot<int>(cmd->args[0]));
      return;
    default:
      return;
  }
}
