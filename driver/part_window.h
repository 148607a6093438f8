// The windows of the parts, as others than the library can tell them.
#pragma once

#include <windows.h>

#include <cstring>

constexpr char part_class[] = "__osw_child_window";

// Whether it is the window of a part, of whatever program. Any thread.
inline bool is_part_window(HWND window) {
  char name[sizeof part_class + 1] = "";
  return GetClassNameA(window, name, sizeof name) != 0 && strcmp(name, part_class) == 0;
}
