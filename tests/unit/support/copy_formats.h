// In which format and type a copy travels through memory, by what it copies and how deep the drawable is.
#pragma once

#include <windows.h>

#include <GL/gl.h>

struct transfer {
  GLenum format;
  GLenum type;
};

struct copy_format {
  GLenum kind;  // as glCopyPixels takes it
  BYTE color;   // bits of the drawable
  BYTE depth;
  transfer expected;  // 0: none, which GL refuses
};

inline constexpr copy_format copy_formats[] = {{GL_COLOR, 16, 24, {GL_RGB, GL_UNSIGNED_SHORT_5_6_5}},
                                               {GL_COLOR, 24, 24, {GL_RGB, GL_UNSIGNED_BYTE}},
                                               {GL_COLOR, 32, 24, {GL_RGBA, GL_UNSIGNED_BYTE}},
                                               {GL_COLOR, 8, 24, {0, 0}},
                                               {GL_DEPTH, 32, 16, {GL_DEPTH_COMPONENT, GL_UNSIGNED_SHORT}},
                                               {GL_DEPTH, 32, 24, {GL_DEPTH_COMPONENT, GL_UNSIGNED_INT}},
                                               {GL_DEPTH, 32, 32, {GL_DEPTH_COMPONENT, GL_UNSIGNED_INT}},
                                               {GL_DEPTH, 32, 0, {0, 0}},
                                               {GL_DEPTH, 32, 8, {0, 0}},
                                               {GL_STENCIL, 32, 24, {0, 0}},
                                               {0x1234, 32, 24, {0, 0}}};
