// The viewer's camera: it circles a point and looks at it.
#pragma once

#include "model.h"

struct camera {
  vec3 target;
  float distance;   // from the target, above 0
  float azimuth;    // degrees around the upright axis, 0 looking along +y
  float elevation;  // degrees above the ground, -90 to 90
  float radius;     // of what is to be seen, for the depth range
};

// The camera of the n-th picture of the turntable. It depends on nothing but n and the model.
camera camera_of_frame(int n, const model& shown);

// What the mouse does, in pixels of movement; height is that of the window in pixels.
void orbit(camera* view, int dx, int dy);
void pan(camera* view, int dx, int dy, int height);
// One notch of the wheel is 120; positive comes nearer.
void zoom(camera* view, int wheel);

// Sets GL's projection and model-view matrices for a window of this size in pixels.
void apply_camera(const camera& view, int width, int height);
// Just the camera's rotation, for the axes in the corner.
void apply_rotation(const camera& view);
