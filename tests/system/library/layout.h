// Where the parts of a window must lie, told anew from the monitors and from the options in force.
#pragma once

#include <windows.h>

#include <vector>

// The monitors, in the order in which the system tells them, in pixels of the desktop.
std::vector<RECT> monitor_areas();

// What holds all of them.
RECT desktop_of(const std::vector<RECT>& monitors);

long area_of(const RECT& rect);
RECT common_of(const RECT& a, const RECT& b);

// The rectangle of each part in client coordinates of `hwnd`.
std::vector<RECT> expected_layout(HWND hwnd);

// Each part of the window must have just that rectangle. Nothing in a process that is not spanned.
void check_layout(HWND hwnd);
