// Windows that go from place to place while they are drawn to.
#pragma once

#include <string>
#include <vector>

#include "window.h"

// Frames without a look at them.
void paint_frames(const gl_window& window, int count);

// The place after `step` of `steps` equal steps on the way.
place on_the_way(const place& from, const place& to, int step, int steps);

// Goes there in steps, with a frame at each.
void travel(const gl_window& window, const place& from, const place& to, int steps);

struct stop {
  std::string name;  // of the step
  place at;
};

// Makes a window at the first stop and takes it to all the others, each in so many steps. At each stop its parts must
// lie where they should, and a picture is shown.
void visit(const std::vector<stop>& stops, int steps = 12);
