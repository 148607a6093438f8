// The pixel state of the contexts of a rendering, as a driver would keep it: glPixelStorei and glBindBuffer set it, the
// queries of numbers and flags answer with it. It begins as GL's own does.
#pragma once

#include <map>

#include "support/library.h"

namespace pixel_state {

// By context and by the name of the query.
using values = std::map<std::pair<HGLRC, u64>, GLint>;
values& all();

// Keeps the state of the children of `rendered` from now on.
void serve(const library::rendering& rendered);

struct store_value {
  GLenum name;
  GLint value;
};

// Sets a value on each part, as if the application had done so.
void set(const library::rendering& rendered, GLenum name, GLint value);

}  // namespace pixel_state
