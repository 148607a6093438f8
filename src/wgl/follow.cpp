#include "wgl/follow.h"

#include <atomic>

#include "pipeline/push.h"
#include "startup/config/monitors.h"
#include "startup/config/options.h"
#include "wgl/child_moves.h"
#include "wgl/geometry_commands.h"
#include "wgl/layout.h"

namespace {

constexpr char subclass_property[] = "subclass_window_prop_str";

WNDPROC previous_procedure(HWND hwnd) {
  return reinterpret_cast<WNDPROC>(GetPropA(hwnd, subclass_property));
}

LRESULT CALLBACK __osw_window_subclass_proc(HWND hwnd, UINT message, WPARAM wparam, LPARAM lparam);
LRESULT CALLBACK __osw_ancestor_subclass_proc(HWND hwnd, UINT message, WPARAM wparam, LPARAM lparam);

bool is_ours(LONG_PTR procedure) {
  return procedure == reinterpret_cast<LONG_PTR>(__osw_window_subclass_proc) ||
         procedure == reinterpret_cast<LONG_PTR>(__osw_ancestor_subclass_proc);
}

// A window that has been replaced once is left alone: it may have been an ancestor, or its binding may have failed
// later on. The predecessor is remembered before it is replaced, for messages may come at once; and never is it one of
// ours, which another thread may be putting there just now, for that would call itself for ever. One that cannot be
// remembered stays.
BOOL replace_procedure(HWND hwnd, WNDPROC procedure) {
  if (!is_of_this_process(hwnd) || previous_procedure(hwnd)) return 1;
  const LONG_PTR previous = GetWindowLongPtrA(hwnd, GWLP_WNDPROC);
  if (is_ours(previous)) return 1;
  if (!SetPropA(hwnd, subclass_property, reinterpret_cast<HANDLE>(previous))) return 0;
  const LONG_PTR replaced = SetWindowLongPtrA(hwnd, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(procedure));
  if (replaced == previous || is_ours(replaced)) return 1;
  if (replaced) return SetPropA(hwnd, subclass_property, reinterpret_cast<HANDLE>(replaced)) != 0;
  RemovePropA(hwnd, subclass_property);
  return 0;
}

void restore_procedure(HWND hwnd, WNDPROC previous) {
  SetWindowLongPtrA(hwnd, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(previous));
  RemovePropA(hwnd, subclass_property);
}

// A message that reaches a procedure whose property is gone has nobody else to go to.
LRESULT call_previous(WNDPROC previous, HWND hwnd, UINT message, WPARAM wparam, LPARAM lparam) {
  if (!previous) return DefWindowProcA(hwnd, message, wparam, lparam);
  return CallWindowProcA(previous, hwnd, message, wparam, lparam);
}

bool changes_geometry(UINT message) {
  return message == WM_MOVE || message == WM_SIZE || message == WM_WINDOWPOSCHANGED;
}

// The workers of this thread may still have swaps of the window in their list.
void release_window(HWND hwnd, WNDPROC previous) {
  wait_for_workers(__osw_fetch_thread_state());
  __osw_detach_window_mapping(hwnd);
  restore_procedure(hwnd, previous);
}

BOOL CALLBACK follow_descendant(HWND hwnd, LPARAM) {
  __osw_on_window_changed(hwnd);
  return 1;
}

// A bound window may be an ancestor of others as well.
void follow_window_and_descendants(HWND hwnd) {
  __osw_on_window_changed(hwnd);
  EnumChildWindows(hwnd, follow_descendant, 0);
}

LRESULT CALLBACK __osw_window_subclass_proc(HWND hwnd, UINT message, WPARAM wparam, LPARAM lparam) {
  const WNDPROC previous = previous_procedure(hwnd);
  if (message == WM_DESTROY) release_window(hwnd, previous);
  if (changes_geometry(message)) follow_window_and_descendants(hwnd);
  return call_previous(previous, hwnd, message, wparam, lparam);
}

// An ancestor may have been bound since.
LRESULT CALLBACK __osw_ancestor_subclass_proc(HWND hwnd, UINT message, WPARAM wparam, LPARAM lparam) {
  const WNDPROC previous = previous_procedure(hwnd);
  if (message == WM_DESTROY) {
    if (__osw_window_mapping_of(hwnd)) {
      release_window(hwnd, previous);
    } else {
      restore_procedure(hwnd, previous);
    }
  }
  if (changes_geometry(message)) follow_window_and_descendants(hwnd);
  return call_previous(previous, hwnd, message, wparam, lparam);
}

void refresh_rects(__osw_window_mapping* mapping) {
  RECT client = __osw_load_rect(mapping->client_rect);
  GetClientRect(mapping->app_hwnd, &client);
  __osw_store_rect(mapping->client_rect, client);
  GetWindowRect(mapping->app_hwnd, &mapping->window_rect);
}

void lay_out(__osw_window_mapping* mapping, void (*layout)(__osw_window_mapping*, i32)) {
  for (i32 part = 0; part < __osw_part_count; ++part) {
    layout(mapping, part);
    __osw_apply_child_rect(&mapping->parts[part]);
  }
  await_moves(mapping);
}

// The thread of a frame and that of the window within may hear of changes at once. One of them lays out, as often as it
// takes for the other's change too.
void lay_out_changes(__osw_window_mapping* mapping) {
  std::atomic_ref<u32> changes(mapping->changes);
  if (changes.fetch_add(1) != 0) return;
  u32 seen;
  do {
    seen = changes.load();
    refresh_rects(mapping);
    lay_out(mapping, __osw_layout_part);
  } while (changes.fetch_sub(seen) != seen);
}

void relayout(const __osw_thread_state* state, void (*layout)(__osw_window_mapping*, i32)) {
  __osw_window_mapping* mapping = state->window_mapping;
  if (mapping && OSW_DW_UseSplitParentMethod) lay_out(mapping, layout);
}

}  // namespace

BOOL __osw_subclass_window(HWND hwnd) {
  BOOL replaced = replace_procedure(hwnd, __osw_window_subclass_proc);
  for (HWND ancestor = GetParent(hwnd); ancestor; ancestor = GetParent(ancestor)) {
    replaced &= replace_procedure(ancestor, __osw_ancestor_subclass_proc);
  }
  return replaced;
}

void __osw_on_window_changed(HWND hwnd) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  __osw_window_mapping* mapping = __osw_use_window_mapping(hwnd);
  if (!mapping) return;
  lay_out_changes(mapping);
  __osw_drop_window_mapping(mapping);
  __osw_send_viewport_offset(state);
  __osw_send_drawable_size(state);
}

void __osw_relayout_intersect(__osw_thread_state* state) {
  relayout(state, __osw_layout_intersect);
}

void __osw_relayout_split(__osw_thread_state* state) {
  relayout(state, __osw_layout_split_parent);
}
