// The ops that the general form of the sequential path does not fit. Each has the op's own prototype and is declared
// here, so that the table and the aliases take it.
#pragma once

#include "sequential/broadcast.h"

#define SEQUENTIAL_EXCEPTION(function, result, parameters) \
  template <>                                              \
  result broadcast<function##_op> parameters;

// Gathers the rectangle from every part that shows some of it.
SEQUENTIAL_EXCEPTION(glReadPixels, void,
                     (GLint x, GLint y, GLsizei width, GLsizei height, GLenum format, GLenum type, void* pixels))

// Read the source from all parts and write it to all parts.
SEQUENTIAL_EXCEPTION(glCopyPixels, void, (GLint x, GLint y, GLsizei width, GLsizei height, GLenum type))
SEQUENTIAL_EXCEPTION(glCopyTexImage1D, void,
                     (GLenum target, GLint level, GLenum internalformat, GLint x, GLint y, GLsizei width, GLint border))
SEQUENTIAL_EXCEPTION(glCopyTexImage2D, void,
                     (GLenum target, GLint level, GLenum internalformat, GLint x, GLint y, GLsizei width,
                      GLsizei height, GLint border))
SEQUENTIAL_EXCEPTION(glCopyTexSubImage1D, void,
                     (GLenum target, GLint level, GLint xoffset, GLint x, GLint y, GLsizei width))
SEQUENTIAL_EXCEPTION(glCopyTexSubImage2D, void,
                     (GLenum target, GLint level, GLint xoffset, GLint yoffset, GLint x, GLint y, GLsizei width,
                      GLsizei height))
SEQUENTIAL_EXCEPTION(glCopyTexSubImage3D, void,
                     (GLenum target, GLint level, GLint xoffset, GLint yoffset, GLint zoffset, GLint x, GLint y,
                      GLsizei width, GLsizei height))

// Map every part's buffer and give the application one block, which reaches the parts when it is unmapped.
SEQUENTIAL_EXCEPTION(glMapBuffer, void*, (GLenum target, GLenum access))
SEQUENTIAL_EXCEPTION(glMapBufferRange, void*, (GLenum target, GLintptr offset, GLsizeiptr length, GLbitfield access))
SEQUENTIAL_EXCEPTION(glUnmapBuffer, GLboolean, (GLenum target))

#undef SEQUENTIAL_EXCEPTION
