// The offset of the application's window in a drawable that shows a part of it.
//
// While there is an offset, the host's viewport, scissor box and raster position are the application's plus the offset:
// nothing but the offset contained in each is kept here, and the values are always the host's own. So whatever changes
// them, a display list or a popped attribute among them, is seen. A framebuffer object and a pbuffer have no offset.
//
// All on the thread on which `c` is current on the host.
#pragma once

#include <type_traits>

#include "context.h"

constexpr point no_offset = {0, 0};

// A coordinate with an offset. It may lie far out; a sum that overflows is no window's any more, and only has to be
// defined. A short becomes an int: with the offset it may need more bits.
template <class Value>
inline auto moved(Value value, GLint by) {
  if constexpr (std::is_integral_v<Value>) {
    return static_cast<GLint>(static_cast<GLuint>(value) + static_cast<GLuint>(by));
  } else {
    return value + static_cast<Value>(by);
  }
}

// What start_bindings is given (binding.h): the initial viewport and scissor box at the first time, and an offset that
// could not be applied before.
void settle_new_binding(context* c);

// Brings the host's values to the offset that drawing has now, unless that would go into a display list or leave a
// token in the feedback buffer.
void settle_offset(context* c);

// The offset that drawing has now. It is a window's, and its context may be bound to a pbuffer next.
point drawing_offset(const context* c);

// Whether the window has an offset at all. `c` may be null.
bool has_offset(const context* c);

// Whether a call goes into a display list: then it changes nothing now.
bool is_compiling(const context* c);

// The host's value of an integer state, and 0 inside glBegin and glEnd.
GLint host_integer(GLenum name);
