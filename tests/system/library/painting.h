// A picture for scenes that are about windows and contexts.
#pragma once

#include "scene.h"

// Draws picture `number` over the whole client area, with the viewport set to it; no two numbers look alike, and
// neither do two sizes.
void paint(HWND hwnd, int number);

// The same, and shows it.
void paint_and_show(const gl_window& window, int number, const char* step);
