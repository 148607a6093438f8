// A picture for scenes that are about windows and contexts.
#pragma once

#include "window.h"

// Draws picture `number` over the whole client area, with the viewport set to it; no two numbers look alike, and
// neither do two sizes.
void paint(HWND hwnd, int number);
