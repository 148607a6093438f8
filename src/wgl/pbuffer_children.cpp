#include "wgl/pbuffer_children.h"

#include "dispatch/report.h"
#include "pipeline/push.h"
#include "startup/config/monitors.h"
#include "wgl/child_windows.h"
#include "wgl/main_table.h"
#include "wgl/records/pbuffer.h"

u32 __osw_pbuffer_register(__osw_thread_state* state, HPBUFFERARB hpbuffer, HDC hdc, i32 format, i32 width, i32 height,
                           const int* attributes) {
  if (__osw_pbuffer_lookup(hpbuffer)) return 1;
  __osw_pbuffer pbuffer{};
  pbuffer.app_hpbuffer = hpbuffer;
  pbuffer.app_hdc = hdc;
  pbuffer.pixel_format = format;
  pbuffer.width = width;
  pbuffer.height = height;
  for (i32 part = 0; part < __osw_part_count; ++part) {
    __osw_pbuffer_part& child = pbuffer.parts[part];
    child.hidden_hdc = __osw_create_hidden_dc(state, hdc, part, format, width, height);
    child.child_hpbuffer = sys_wgl<wglCreatePbufferARB_op>(state)(child.hidden_hdc, format, width, height, attributes);
    if (child.child_hpbuffer) continue;
    show_failure(nullptr, "Creating child pbuffer failed!");
    return 0;
  }
  __osw_pbuffer_enter(pbuffer);
  return 1;
}

u32 __osw_pbuffer_unregister(__osw_thread_state* state, HPBUFFERARB hpbuffer) {
  const __osw_pbuffer* pbuffer = __osw_pbuffer_lookup(hpbuffer);
  if (!pbuffer) return 1;
  wait_for_workers(state);
  for (i32 part = 0; part < __osw_part_count; ++part) {
    sys_wgl<wglDestroyPbufferARB_op>(state)(pbuffer->parts[part].child_hpbuffer);
    __osw_destroy_hidden_dc(pbuffer->parts[part].hidden_hdc);
  }
  __osw_pbuffer_erase(hpbuffer);
  return 1;
}

HPBUFFERARB wglCreatePbufferARB_op::handle(HDC hdc, int format, int width, int height, const int* attributes) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  const HPBUFFERARB hpbuffer = sys_wgl<wglCreatePbufferARB_op>(state)(hdc, format, width, height, attributes);
  if (!hpbuffer) return nullptr;
  return __osw_pbuffer_register(state, hpbuffer, hdc, format, width, height, attributes) ? hpbuffer : nullptr;
}

BOOL wglDestroyPbufferARB_op::handle(HPBUFFERARB hpbuffer) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  const BOOL result = sys_wgl<wglDestroyPbufferARB_op>(state)(hpbuffer);
  if (!result || !hpbuffer) return result;
  return result & static_cast<BOOL>(__osw_pbuffer_unregister(state, hpbuffer));
}

// Storing the device context is what makes a later make-current find the pbuffer.
HDC wglGetPbufferDCARB_op::handle(HPBUFFERARB hpbuffer) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  const HDC hdc = sys_wgl<wglGetPbufferDCARB_op>(state)(hpbuffer);
  __osw_pbuffer* pbuffer = hdc && hpbuffer ? __osw_pbuffer_lookup(hpbuffer) : nullptr;
  if (!pbuffer) return nullptr;
  pbuffer->pbuffer_hdc = hdc;
  for (i32 part = 0; part < __osw_part_count; ++part) {
    __osw_pbuffer_part& child = pbuffer->parts[part];
    relaxed_store(child.child_hdc, sys_wgl<wglGetPbufferDCARB_op>(state)(child.child_hpbuffer));
  }
  return hdc;
}

// The record goes on answering to the released device context.
int wglReleasePbufferDCARB_op::handle(HPBUFFERARB hpbuffer, HDC hdc) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  const int result = sys_wgl<wglReleasePbufferDCARB_op>(state)(hpbuffer, hdc);
  const __osw_pbuffer* pbuffer = result && hpbuffer ? __osw_pbuffer_lookup(hpbuffer) : nullptr;
  if (!pbuffer) return 0;
  for (i32 part = 0; part < __osw_part_count; ++part) {
    const __osw_pbuffer_part& child = pbuffer->parts[part];
    sys_wgl<wglReleasePbufferDCARB_op>(state)(child.child_hpbuffer, child.child_hdc);
  }
  return result & 1;
}
