// The ops that the general form of the sequential path does not fit. Each has the op's own prototype.
#pragma once

#include "sequential/broadcast.h"

// Gathers the rectangle from every part that shows some of it.
template <>
void broadcast<glReadPixels_op>(GLint x, GLint y, GLsizei width, GLsizei height, GLenum format, GLenum type,
                                void* pixels);
