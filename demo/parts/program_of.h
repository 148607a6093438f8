// Whose windows are whose.
#pragma once

#include <windows.h>

// Whether a window belongs to a running program, told by its file name without a folder.
bool is_window_of(HWND window, const char* program);
