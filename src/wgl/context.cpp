#include "wgl/context.h"

#include "dispatch/report.h"
#include "pipeline/push.h"
#include "pipeline/threads.h"
#include "startup/config/monitors.h"
#include "wgl/child_windows.h"
#include "wgl/main_table.h"
#include "wgl/records/glrc.h"

namespace {

// The hidden window gives the child its pixel format and goes again: the child is made current on other drawables.
HGLRC create_child_context(__osw_thread_state* state, HDC hdc, i32 part) {
  const HDC hidden_hdc = __osw_create_hidden_dc(state, hdc, part, 0, 1, 1);
  const HGLRC child = sys_wgl<wglCreateContext_op>(state)(hidden_hdc);
  __osw_destroy_hidden_dc(hidden_hdc);
  return child;
}

void push_share(__osw_thread_state* state, const shared_pair& pair) {
  const u64 contexts[] = {to_slot(pair.first), to_slot(pair.second)};
  __osw_push_wgl_cmd(state, wglShareLists_op::op, 2, contexts, 0);
}

void share_here(const __osw_thread_state* state, const shared_pair& pair) {
  const __osw_glrc* from = __osw_glrc_lookup(pair.first);
  const __osw_glrc* to = __osw_glrc_lookup(pair.second);
  for (i32 part = 0; from && to && part < __osw_part_count; ++part) {
    sys_wgl<wglShareLists_op>(state)(from->child_hglrc[part], to->child_hglrc[part]);
  }
}

bool has_record(HGLRC hglrc) {
  return hglrc && __osw_glrc_lookup(hglrc);
}

}  // namespace

u32 __osw_glrc_register(__osw_thread_state* state, HDC hdc, HGLRC hglrc) {
  if (__osw_glrc_lookup(hglrc)) return 1;
  __osw_glrc glrc = new_glrc(hglrc);
  for (i32 part = 0; part < __osw_part_count; ++part) {
    glrc.child_hglrc[part] = create_child_context(state, hdc, part);
    if (glrc.child_hglrc[part]) continue;
    show_failure(nullptr, "Creating child glrc failed!");
    return 0;
  }
  __osw_glrc_enter(glrc);
  return 1;
}

u32 __osw_glrc_unregister(__osw_thread_state* state, HGLRC hglrc) {
  const __osw_glrc* glrc = hglrc ? __osw_glrc_lookup(hglrc) : nullptr;
  if (!glrc) return 1;
  wait_for_workers(state);
  for (i32 part = 0; part < __osw_part_count; ++part) {
    sys_wgl<wglDeleteContext_op>(state)(glrc->child_hglrc[part]);
  }
  __osw_glrc_erase(hglrc);
  return 1;
}

void __osw_glrc_copy(__osw_thread_state* state, HGLRC source, HGLRC destination, UINT mask) {
  if (!source || !destination) return;
  const __osw_glrc* from = __osw_glrc_lookup(source);
  const __osw_glrc* to = __osw_glrc_lookup(destination);
  if (!from || !to) return;
  for (i32 part = 0; part < __osw_part_count; ++part) {
    sys_wgl<wglCopyContext_op>(state)(from->child_hglrc[part], to->child_hglrc[part], mask);
  }
}

HGLRC wglCreateContext_op::handle(HDC hdc) {
  return entry_in<wglCreateLayerContext_op>(__osw_fetch_thread_state()->wgl_table)(hdc, 0);
}

HGLRC wglCreateLayerContext_op::handle(HDC hdc, int layer) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  const HGLRC hglrc = sys_wgl<wglCreateLayerContext_op>(state)(hdc, layer);
  if (!hglrc) return nullptr;
  return __osw_glrc_register(state, hdc, hglrc) ? hglrc : nullptr;
}

BOOL wglDeleteContext_op::handle(HGLRC hglrc) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  const HGLRC current = sys_wgl<wglGetCurrentContext_op>(state)();
  const BOOL result = sys_wgl<wglDeleteContext_op>(state)(hglrc);
  if (result && hglrc && hglrc == current && __osw_has_pipeline(state)) {
    const u64 release[] = {0, 0};
    __osw_push_wgl_cmd(state, wglMakeCurrent_op::op, 2, release, 0);
  }
  __osw_glrc_unregister(state, hglrc);
  return result;
}

BOOL wglCopyContext_op::handle(HGLRC source, HGLRC destination, UINT mask) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  const BOOL result = sys_wgl<wglCopyContext_op>(state)(source, destination, mask);
  if (result) __osw_glrc_copy(state, source, destination, mask);
  return result;
}

void __osw_push_remembered_shares(__osw_thread_state* state) {
  shared_pair pair;
  while (__osw_glrc_take_share(&pair)) push_share(state, pair);
}

void settle_shares(__osw_thread_state* state, HGLRC hglrc) {
  const __osw_glrc* glrc = hglrc ? __osw_glrc_lookup(hglrc) : nullptr;
  if (!glrc || !glrc->share_with) return;
  if (__osw_has_pipeline(state)) return __osw_push_remembered_shares(state);
  shared_pair pair;
  while (__osw_glrc_take_share(&pair)) share_here(state, pair);
}

// Programs often share before they make anything current; the parts hear of it with the first binding then.
BOOL wglShareLists_op::handle(HGLRC first, HGLRC second) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  const BOOL result = sys_wgl<wglShareLists_op>(state)(first, second);
  if (!result) return result;
  if (!has_record(first) || !has_record(second)) {
    __osw_report(severity_warning, "wglShareLists of a context without child contexts reaches no part.\n");
  }
  if (__osw_has_pipeline(state)) {
    push_share(state, {first, second});
  } else if (second) {
    __osw_glrc_remember_share({first, second});
  }
  return result;
}
