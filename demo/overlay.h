// What lies over the picture, in pixels of the window.
#pragma once

#include "scene.h"

// Draws the title, the list of materials, the axes in the corner and, at the bottom, the line `status` over the picture
// of a scene, and leaves GL's matrices undefined. Nothing if the scene shows no labels.
void draw_overlay(const scene& drawn, const camera& view, int width, int height, const std::string& status);
