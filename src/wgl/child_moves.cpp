#include "wgl/child_moves.h"

#include <cstring>

#include "startup/config/monitors.h"
#include "wgl/layout.h"

namespace {

constexpr UINT longest_wait = 100;  // milliseconds

bool is_own(HWND child) {
  return GetWindowThreadProcessId(child, nullptr) == GetCurrentThreadId();
}

// A plain move of another thread's window would wait for that thread without end.
UINT flags_for(HWND child, UINT flags) {
  return is_own(child) ? flags : flags | SWP_ASYNCWINDOWPOS;
}

void refresh_screen_rect(__osw_child_part* child) {
  RECT screen;
  if (GetWindowRect(relaxed_load(child->child_hwnd), &screen)) __osw_store_rect(child->screen_rect, screen);
}

bool stands_in_place(const __osw_window_mapping* mapping, const __osw_child_part& child) {
  RECT screen;
  if (!GetWindowRect(relaxed_load(child.child_hwnd), &screen)) return true;
  const RECT stands = screen_to_client(mapping->app_hwnd, screen);
  const RECT wanted = __osw_load_rect(child.part_rect);
  return memcmp(&stands, &wanted, sizeof stands) == 0;
}

// Whether the window's thread takes messages. Its first answer may come before what was posted to it is carried out,
// its second one cannot, unless it is itself waiting for an answer.
bool answers(HWND hwnd) {
  constexpr int answers_asked = 2;
  for (int asked = 0; asked < answers_asked; ++asked) {
    DWORD_PTR answer = 0;
    if (!SendMessageTimeoutA(hwnd, WM_NULL, 0, 0, SMTO_NORMAL | SMTO_ABORTIFHUNG, longest_wait, &answer)) return false;
  }
  return true;
}

}  // namespace

void __osw_apply_child_rect(__osw_child_part* child) {
  const HWND hwnd = relaxed_load(child->child_hwnd);
  const RECT rect = __osw_load_rect(child->part_rect);
  SetWindowPos(hwnd, nullptr, rect.left, rect.top, rect.right - rect.left, rect.bottom - rect.top,
               flags_for(hwnd, SWP_NOZORDER));
  refresh_screen_rect(child);
}

void await_moves(__osw_window_mapping* mapping) {
  for (i32 part = 0; part < __osw_part_count; ++part) {
    __osw_child_part& child = mapping->parts[part];
    const HWND hwnd = relaxed_load(child.child_hwnd);
    if (is_own(hwnd) || stands_in_place(mapping, child)) continue;
    if (!relaxed_load(mapping->takes_no_messages) && !answers(hwnd)) relaxed_store(mapping->takes_no_messages, 1u);
    refresh_screen_rect(&child);
    if (!stands_in_place(mapping, child)) relaxed_store(mapping->moves_missed, 1u);
  }
}

// A thread whose children have come into their places by themselves has begun to take messages. Those of other threads
// are left for them.
void take_missed_moves(const __osw_thread_state* state) {
  __osw_window_mapping* mapping = relaxed_load(state->window_mapping);
  if (!mapping || !relaxed_load(mapping->moves_missed)) return;
  relaxed_store(mapping->moves_missed, 0u);
  bool followed = true;
  for (i32 part = 0; part < __osw_part_count; ++part) {
    __osw_child_part& child = mapping->parts[part];
    if (stands_in_place(mapping, child)) continue;
    followed = false;
    if (is_own(relaxed_load(child.child_hwnd))) {
      __osw_apply_child_rect(&child);
    } else {
      relaxed_store(mapping->moves_missed, 1u);
    }
  }
  if (followed) relaxed_store(mapping->takes_no_messages, 0u);
}

void __osw_show_children(__osw_window_mapping* mapping, bool show) {
  const UINT flags = SWP_NOMOVE | SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE | (show ? SWP_SHOWWINDOW : SWP_HIDEWINDOW);
  for (i32 part = 0; part < __osw_part_count; ++part) {
    const HWND child = relaxed_load(mapping->parts[part].child_hwnd);
    SetWindowPos(child, nullptr, 0, 0, 0, 0, flags_for(child, flags));
  }
}
