// What a context's calls draw to: a share of the window, a framebuffer object, a display list.
//
// All on the thread on which `c` is current on the host.
#pragma once

#include "context.h"

// Whether the context's drawable is as large as the window and shows a share of it. `c` may be null.
bool has_share(const context* c);

// Whether a call goes into a display list: then it changes nothing now.
bool is_compiling(const context* c);

// Notes in `c->window_drawn` whether drawing goes to the window, or to a framebuffer object.
void find_window_drawn(context* c);

// Whether pixels are read from the window.
bool is_window_read();

// The host's value of an integer state, and 0 inside glBegin and glEnd.
GLint host_integer(GLenum name);
