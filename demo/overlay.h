// What lies over the picture, in pixels of the window.
#pragma once

#include "scene.h"

// Draws the title, the list of materials, the axes in the corner and the status line, and leaves GL's matrices
// undefined.
void draw_overlay(const scene& drawn, const camera& view, int width, int height, const std::string& status);
