// A place of a window from that of another.
#pragma once

#include <windows.h>

// Where an application's window lies, of which a child shows a share: the lower left corner from the child's, up and to
// the right, and the size.
struct window_place {
  LONG x, y;
  SIZE size;
};
