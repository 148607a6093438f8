#include "wgl/records/window_mapping.h"

#include <cstdlib>

#include "dispatch/process_end.h"

const char mapping_property[] = "child_window_mapping_prop_str";
CRITICAL_SECTION __osw_mapping_lock;

bool is_of_this_process(HWND hwnd) {
  DWORD process_id = 0;
  GetWindowThreadProcessId(hwnd, &process_id);
  return process_id == GetCurrentProcessId();
}

__osw_window_mapping* __osw_window_mapping_of(HWND hwnd) {
  if (!is_of_this_process(hwnd)) return nullptr;
  return static_cast<__osw_window_mapping*>(GetPropA(hwnd, mapping_property));
}

__osw_window_mapping* __osw_use_window_mapping(HWND hwnd) {
  EnterCriticalSection(&__osw_mapping_lock);
  __osw_window_mapping* mapping = __osw_window_mapping_of(hwnd);
  if (mapping) ++mapping->users;
  LeaveCriticalSection(&__osw_mapping_lock);
  return mapping;
}

void __osw_drop_window_mapping(__osw_window_mapping* mapping) {
  if (!mapping) return;
  enter_unless_process_ends(&__osw_mapping_lock);
  const u32 users = --mapping->users;
  leave_unless_process_ends(&__osw_mapping_lock);
  if (!users) free(mapping);
}

u32 __osw_attach_window_mapping(const __osw_window_mapping& record) {
  auto* mapping = static_cast<__osw_window_mapping*>(calloc(1, sizeof(__osw_window_mapping)));
  if (!mapping) return 0;
  *mapping = record;
  mapping->users = 1;
  SetPropA(mapping->app_hwnd, mapping_property, mapping);
  return 1;
}

void __osw_detach_window_mapping(HWND hwnd) {
  EnterCriticalSection(&__osw_mapping_lock);
  auto* mapping = static_cast<__osw_window_mapping*>(RemovePropA(hwnd, mapping_property));
  LeaveCriticalSection(&__osw_mapping_lock);
  __osw_drop_window_mapping(mapping);
}

RECT __osw_load_rect(const RECT& rect) {
  return {relaxed_load(rect.left), relaxed_load(rect.top), relaxed_load(rect.right), relaxed_load(rect.bottom)};
}

void __osw_store_rect(RECT& rect, const RECT& value) {
  relaxed_store(rect.left, value.left);
  relaxed_store(rect.top, value.top);
  relaxed_store(rect.right, value.right);
  relaxed_store(rect.bottom, value.bottom);
}
