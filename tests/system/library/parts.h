// The windows that the library lays over an application's window, as any program can see them.
#pragma once

#include <windows.h>

#include <vector>

struct part_window {
  int number;
  HWND hwnd;
  RECT rect;     // in client coordinates of the application's window
  bool visible;  // neither hidden nor empty
};

// Those of `hwnd`, by number.
std::vector<part_window> parts_of(HWND hwnd);

// The area of the parts that are visible, in pixels.
long visible_area(const std::vector<part_window>& parts);
