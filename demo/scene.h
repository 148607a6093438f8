// What stands in the space that the viewer shows: the model on its ground, with its dimensions.
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
// caller and must outlive the scene. On failure the result is false, and `*why` says in one line what GL does not have.
bool make_scene(const model& shown, const renderer& by, scene* result, std::string* why);

// Clears the back buffer and draws one picture of `width` by `height` pixels into it.
void draw_scene(const scene& drawn, const camera& view, int width, int height);
