// The size of the application's window, which that of a drawable may not be, and drawables that the user never sees.
#pragma once

#include "forward.h"

// One of the driver's two private calls, on the calling thread's context; without one it does nothing. In pixels. A
// context that was never given a viewport, or a scissor box, gets it from the first call. (-1, -1): the drawable is not
// what the user sees, and is spared until the context is bound anew or gets another size. Other negative values do
// nothing.
template <>
void forward<glDrawableSizeZ4_op, void>(GLint width, GLint height);

// A spared context's frames are never swapped, so nothing else would make the host draw what it has put off: a frame
// begins with a clear, and what was drawn before is handed over with it.
template <>
void forward<glClear_op, void>(GLbitfield mask);
