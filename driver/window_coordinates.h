// The application's window coordinates in a drawable that shows a part of its window.
//
// While there is an offset, the host's viewport, scissor box and raster position are the application's plus the offset:
// nothing but the offset contained in each is kept here, and the values are always the host's own. So whatever changes
// them, a display list or a popped attribute among them, is seen. A framebuffer object and a pbuffer have no offset.
#pragma once

#include "context.h"
#include "forward.h"

// What start_bindings is given (binding.h): the initial viewport and scissor box at the first time, and an offset that
// could not be applied before.
void settle_new_binding(context* c);

// After wglCopyContext: what the host copied contains the source's offsets.
void copy_offsets(context* destination, const context* source, GLbitfield mask);

// Whether a call goes into a display list of the calling thread's context, which is current on the host: then it
// changes nothing now.
bool is_compiling(const context* c);

// One of the driver's two private calls, on the calling thread's context; without one it does nothing. x and y in
// pixels, of the lower left corner of the application's window from that of the drawable; either sign.
template <>
void forward<glViewportOffsetZ4_op, void>(GLint x, GLint y);

template <>
void forward<glViewport_op, void>(GLint x, GLint y, GLsizei width, GLsizei height);
template <>
void forward<glScissor_op, void>(GLint x, GLint y, GLsizei width, GLsizei height);

// The forms of glWindowPos: row(dimensions, letter of the type, type, suffix).
#define WINDOW_POS_FORMS(row)                                                                                       \
  row(2, d, GLdouble, ) row(2, f, GLfloat, ) row(2, i, GLint, ) row(2, s, GLshort, ) row(3, d, GLdouble, )          \
      row(3, f, GLfloat, ) row(3, i, GLint, ) row(3, s, GLshort, ) row(2, d, GLdouble, ARB) row(2, f, GLfloat, ARB) \
          row(2, i, GLint, ARB) row(2, s, GLshort, ARB) row(3, d, GLdouble, ARB) row(3, f, GLfloat, ARB)            \
              row(3, i, GLint, ARB) row(3, s, GLshort, ARB)

#define WINDOW_POS_ARGUMENTS_2(type) type x, type y
#define WINDOW_POS_ARGUMENTS_3(type) type x, type y, type z
#define WINDOW_POS_FORM(dimensions, letter, type, suffix)                                                    \
  template <>                                                                                                \
  void forward<glWindowPos##dimensions##letter##suffix##_op, void>(WINDOW_POS_ARGUMENTS_##dimensions(type)); \
  template <>                                                                                                \
  void forward<glWindowPos##dimensions##letter##v##suffix##_op, void>(const type* v);
WINDOW_POS_FORMS(WINDOW_POS_FORM)
#undef WINDOW_POS_FORM

template <>
void forward<glBlitFramebuffer_op, void>(GLint source_left, GLint source_bottom, GLint source_right, GLint source_top,
                                         GLint left, GLint bottom, GLint right, GLint top, GLbitfield mask,
                                         GLenum filter);
template <>
void forward<glBlitFramebufferEXT_op, void>(GLint source_left, GLint source_bottom, GLint source_right,
                                            GLint source_top, GLint left, GLint bottom, GLint right, GLint top,
                                            GLbitfield mask, GLenum filter);

// What changes whether an offset applies, or which one the host's values contain.
template <>
void forward<glBindFramebuffer_op, void>(GLenum target, GLuint framebuffer);
template <>
void forward<glBindFramebufferEXT_op, void>(GLenum target, GLuint framebuffer);
template <>
void forward<glDeleteFramebuffers_op, void>(GLsizei n, const GLuint* framebuffers);
template <>
void forward<glDeleteFramebuffersEXT_op, void>(GLsizei n, const GLuint* framebuffers);
template <>
void forward<glPushAttrib_op, void>(GLbitfield mask);
template <>
void forward<glPopAttrib_op, void>();
template <>
void forward<glEndList_op, void>();
template <>
GLint forward<glRenderMode_op, GLint>(GLenum mode);
