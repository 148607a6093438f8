// What the viewer draws: the model on its ground, axes, dimensions, and the lines of text around them.
#pragma once

#include "camera.h"
#include "renderer.h"
#include "text.h"

struct scene {
  const model* shown;
  const renderer* by;
  drawing kept;  // by the renderer
  font small, large;
  float grid_step;  // in the model's units
  bool show_ground, show_edges, show_labels;
};

// Prepares the renderer and sets the state that all pictures share. Needs a current context; the model stays with the
// caller and must outlive the scene. On failure the result is false, and *why says in one line what GL does not have.
bool make_scene(const model& shown, const renderer& by, scene* result, std::string* why);

// Draws one picture of width by height pixels into the back buffer. status is the line at the bottom.
void draw_scene(const scene& drawn, const camera& view, int width, int height, const std::string& status);
