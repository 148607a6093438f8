#include "wgl/child_windows.h"

#include "dispatch/report.h"
#include "startup/config/monitors.h"
#include "startup/config/options.h"
#include "startup/config/process_identity.h"
#include "wgl/child_moves.h"
#include "wgl/follow.h"
#include "wgl/layout.h"

CRITICAL_SECTION __osw_class_lock;

namespace {

constexpr char glrc_class[] = "__osw_glrc_window";
constexpr char child_class[] = "__osw_child_window";
constexpr UINT class_style = CS_VREDRAW | CS_HREDRAW | CS_OWNDC;
constexpr DWORD hidden_style = WS_POPUP | WS_DISABLED;
constexpr DWORD child_style = WS_CHILD | WS_VISIBLE | WS_DISABLED | WS_CLIPSIBLINGS | WS_CLIPCHILDREN;
constexpr i32 first_child_id = 100;

LRESULT CALLBACK default_procedure(HWND hwnd, UINT message, WPARAM wparam, LPARAM lparam) {
  return DefWindowProcA(hwnd, message, wparam, lparam);
}

bool register_class(const char* name) {
  WNDCLASSA window_class{};
  window_class.style = class_style;
  window_class.lpfnWndProc = default_procedure;
  window_class.hInstance = relaxed_load(__osw_hinstance);
  window_class.lpszClassName = name;
  EnterCriticalSection(&__osw_class_lock);
  const bool registered = RegisterClassA(&window_class) || GetLastError() == ERROR_CLASS_ALREADY_EXISTS;
  LeaveCriticalSection(&__osw_class_lock);
  return registered;
}

bool __osw_register_glrc_window_class() {
  return register_class(glrc_class);
}

bool __osw_register_child_window_class() {
  return register_class(child_class);
}

// The one application whose own painting is cut away from under the child windows unless its window stops clipping
// them.
void stop_clipping_children(HWND hwnd) {
  const LONG_PTR style = GetWindowLongPtrA(hwnd, GWL_STYLE);
  if (style & WS_CLIPCHILDREN) SetWindowLongPtrA(hwnd, GWL_STYLE, style & ~static_cast<LONG_PTR>(WS_CLIPCHILDREN));
}

HWND create_child(HWND parent, const RECT& rect, i32 part) {
  const auto id = reinterpret_cast<HMENU>(static_cast<intptr_t>(part + first_child_id));
  return CreateWindowExA(0, child_class, "", child_style, rect.left, rect.top, rect.right - rect.left,
                         rect.bottom - rect.top, parent, id, relaxed_load(__osw_hinstance), nullptr);
}

// With the split method a child stands on its own monitor when its device context is taken, and takes its share of the
// parent afterwards.
void take_child_hdc(__osw_window_mapping* mapping, i32 part) {
  __osw_child_part* child = &mapping->parts[part];
  if (OSW_DW_UseSplitParentMethod) {
    __osw_layout_intersect(mapping, part);
    __osw_apply_child_rect(child);
  }
  relaxed_store(child->child_hdc, GetDC(child->child_hwnd));
  if (OSW_DW_UseSplitParentMethod) {
    __osw_layout_split_parent(mapping, part);
    __osw_apply_child_rect(child);
  }
}

// Result: null, or the text of the failure.
const char* add_part(__osw_window_mapping* mapping, i32 part) {
  __osw_child_part* child = &mapping->parts[part];
  __osw_layout_part(mapping, part);
  relaxed_store(child->child_hwnd, create_child(mapping->app_hwnd, child->part_rect, part));
  if (!child->child_hwnd) return "Creating child window failed!";
  take_child_hdc(mapping, part);
  if (!SetPixelFormat(child->child_hdc, mapping->pixel_format, &mapping->pfd)) {
    return "SetPixelFormat for child window failed!";
  }
  return nullptr;
}

// Result: null, or the text of the failure.
const char* add_children(__osw_window_mapping* mapping, HDC hdc) {
  if (!DescribePixelFormat(hdc, mapping->pixel_format, sizeof mapping->pfd, &mapping->pfd)) {
    return "DescribePixelFormat for app window failed!";
  }
  if (!__osw_register_child_window_class()) return "Cannot register child window class!";
  for (i32 part = 0; part < __osw_part_count; ++part) {
    if (const char* failure = add_part(mapping, part)) return failure;
  }
  return __osw_subclass_window(mapping->app_hwnd) ? nullptr : "Subclass window failed!";
}

// The system destroys the windows of a thread that ends, also those within other threads' windows. Without this check
// a window that was first bound on such a thread would stay without parts.
bool is_gone(const __osw_window_mapping* mapping, i32 part) {
  return GetParent(relaxed_load(mapping->parts[part].child_hwnd)) != mapping->app_hwnd;
}

// Makes those children again that are gone. One that could not be made is none, so that the next binding tries again.
// Result: null, or the text of the failure.
const char* replace_lost_children(__osw_window_mapping* mapping) {
  const char* failure = nullptr;
  for (i32 part = 0; part < __osw_part_count && !failure; ++part) {
    if (!is_gone(mapping, part)) continue;
    failure = add_part(mapping, part);
    if (failure) relaxed_store(mapping->parts[part].child_hwnd, static_cast<HWND>(nullptr));
  }
  return failure;
}

// Result: null, or the text of the failure.
const char* create_mapping(HWND hwnd, HDC hdc) {
  if (__osw_app_special_window == 0) stop_clipping_children(hwnd);
  __osw_window_mapping mapping{};
  mapping.app_hdc = hdc;
  mapping.pixel_format = GetPixelFormat(hdc);
  mapping.app_hwnd = hwnd;
  GetClientRect(hwnd, &mapping.client_rect);
  GetWindowRect(hwnd, &mapping.window_rect);
  if (const char* failure = add_children(&mapping, hdc)) return failure;
  // Without a record nothing is ever drawn to the children, which must not cover what the window shows then.
  if (!__osw_attach_window_mapping(mapping)) __osw_show_children(&mapping, false);
  return nullptr;
}

}  // namespace

HDC __osw_create_hidden_dc(__osw_thread_state* state, HDC hdc, i32 part, i32 format, i32 width, i32 height) {
  __osw_register_glrc_window_class();
  const RECT& monitor = __osw_monitor_table[part].rect;
  const HWND hidden = CreateWindowExA(0, glrc_class, glrc_class, hidden_style, monitor.left, monitor.top, width, height,
                                      nullptr, nullptr, relaxed_load(__osw_hinstance), nullptr);
  if (!hidden) {
    show_failure(nullptr, "Creating glrc window failed!");
    return nullptr;
  }
  const HDC hidden_hdc = GetWindowDC(hidden);
  if (!format) format = sys_wgl<wglGetPixelFormat_op>(state)(hdc);
  const PIXELFORMATDESCRIPTOR unused{};  // only the index counts
  if (!sys_wgl<wglSetPixelFormat_op>(state)(hidden_hdc, format, &unused)) {
    show_failure(hidden, "SetPixelFormat for glrc window failed!");
    return nullptr;
  }
  return hidden_hdc;
}

void __osw_destroy_hidden_dc(HDC hidden_hdc) {
  if (!hidden_hdc) return;
  const HWND hidden = WindowFromDC(hidden_hdc);
  ReleaseDC(hidden, hidden_hdc);
  DestroyWindow(hidden);
}

u32 __osw_create_window_mapping(HWND hwnd, HDC hdc) {
  __osw_window_mapping* present = __osw_use_window_mapping(hwnd);
  const char* failure = present ? replace_lost_children(present) : create_mapping(hwnd, hdc);
  __osw_drop_window_mapping(present);
  if (failure) show_failure(hwnd, failure);
  return !failure;
}
