// A hidden window of one pixel, for a context whose own drawable is not what the user sees.
#pragma once

#include "context.h"

// The device context of `c`'s spare window, made at the first call; null, with a report, when the pixel format is not
// one for windows. On the thread that has the context current.
HDC spare_hdc(context* c);

// Destroys it, if there is one. Any thread; the context is current nowhere.
void destroy_spare_window(context* c);
