// The scissor box of a part, cut to its share while the window is drawn to.
//
// Of a drawable as large as the window only the share is seen, and the host need not draw the rest. So its scissor test
// is always on, with the application's box, or all of the window, cut to the share. Whoever changes, saves or asks for
// anything of the scissor test gets the application's values back for as long as that takes; a framebuffer object, a
// pbuffer and a display list that is compiled are never cut. Once any list of the process changes or saves the scissor
// test, calls of lists are not cut either.
//
// All on the thread on which `c` is current on the host.
#pragma once

#include "context.h"

// Puts the host's scissor test where it belongs now, cut or not. Does nothing inside glBegin and glEnd.
void settle_cut(context* c);

// Lets the host have the application's scissor test for good. `c` may be null.
void stop_cutting(context* c);

// Gives the host the application's scissor test for its own life, and then cuts what it has become. `c` may be null.
class uncut_scissor {
 public:
  explicit uncut_scissor(context* c);
  ~uncut_scissor();
  uncut_scissor(const uncut_scissor&) = delete;
  uncut_scissor& operator=(const uncut_scissor&) = delete;

 private:
  context* lifted;
};

// Whether an answer of that name depends on the scissor test.
constexpr bool tells_scissor(GLenum name) {
  return name == GL_SCISSOR_BOX || name == GL_SCISSOR_TEST;
}

// After wglCopyContext: what the host copied contains the source's cut.
void copy_cut(context* destination, const context* source, GLbitfield mask);
