// What the viewer draws: the model on its ground, axes, dimensions, and the lines of text around them.
#pragma once

#include "camera.h"
#include "text.h"

struct scene {
  const model* shown;
  font small, large;
  unsigned ground, faces, edges;  // display lists
  float grid_step;                // in the model's units
  bool show_ground, show_edges, show_labels;
};

// Compiles the display lists and sets the state that all pictures share. Needs a current context; the model stays with
// the caller and must outlive the scene.
scene make_scene(const model& shown);

// Draws one picture of width by height pixels into the back buffer. status is the line at the bottom.
void draw_scene(const scene& drawn, const camera& view, int width, int height, const std::string& status);
