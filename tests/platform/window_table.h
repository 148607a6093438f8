// The windows' own records, for the sources that work on windows.
#pragma once

#include <windows.h>

#include <map>
#include <mutex>
#include <string>

#include "platform/desktop.h"

namespace platform {

struct window_record {
  HWND hwnd = nullptr;
  HWND parent = nullptr;  // of a popup: its owner
  HINSTANCE instance = nullptr;
  std::string class_name;
  std::string title;
  DWORD style = 0;
  DWORD extended_style = 0;
  LONG_PTR id = 0;
  LONG_PTR user_data = 0;
  RECT rect = {};  // on the screen, or in the parent's client area for a child
  frame_widths frame;
  DWORD thread_id = 0;
  DWORD process_id = 0;  // 0 for the simulated one's own
  WNDPROC procedure = nullptr;
  int pixel_format = 0;
  HDC own_dc = nullptr;
  std::map<std::string, HANDLE> properties;  // names in lower case
};

// Guards the table. Never held while a window procedure runs.
extern std::mutex window_lock;
extern std::map<HWND, window_record> window_table;  // handles grow, so the order is that of making

// With the lock held. Null, with the last error set, when there is no such window.
window_record* find_window(HWND hwnd);

inline bool is_child(const window_record& window) {
  return (window.style & (WS_CHILD | WS_POPUP)) == WS_CHILD;
}

// With the lock held: the rectangles on the screen.
RECT screen_rect(const window_record& window);
RECT client_rect(const window_record& window);

// With the lock held: where the coordinates of the window's own rectangle begin, on the screen.
POINT origin_of(const window_record& window);

}  // namespace platform
