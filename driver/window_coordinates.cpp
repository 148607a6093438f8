// The calls that carry window coordinates, which go to the host with the offset added.
#include "binding.h"
#include "host.h"
#include "own_ops.h"
#include "window_offset.h"

namespace {

template <class Op>
void blit_framebuffer(const GLint (&source)[4], const GLint (&target)[4], GLbitfield mask, GLenum filter) {
  const context* c = calling_context();
  point from = no_offset, to = no_offset;
  if (has_offset(c)) {
    if (c->read.hwnd && host_integer(GL_READ_FRAMEBUFFER_BINDING) == 0) from = c->offset;
    to = drawing_offset(c);
  }
  host_gl_entry<Op>()(moved(source[0], from.x), moved(source[1], from.y), moved(source[2], from.x),
                      moved(source[3], from.y), moved(target[0], to.x), moved(target[1], to.y), moved(target[2], to.x),
                      moved(target[3], to.y), mask, filter);
}

template <class HostOp, class Value, class... Depth>
void set_raster_position(Value x, Value y, Depth... z) {
  const context* c = calling_context();
  const point by = c ? c->applied.raster : no_offset;
  if (host_has<HostOp>()) host_gl_entry<HostOp>()(moved(x, by.x), moved(y, by.y), z...);
}

}  // namespace

void own_call<glViewport_op>::call(GLint x, GLint y, GLsizei width, GLsizei height) {
  context* c = calling_context();
  const point by = c ? c->applied.viewport : no_offset;
  host_gl_entry<glViewport_op>()(moved(x, by.x), moved(y, by.y), width, height);
  if (c && c->viewport_pending && !is_compiling(c)) c->viewport_pending = false;
}

void own_call<glScissor_op>::call(GLint x, GLint y, GLsizei width, GLsizei height) {
  context* c = calling_context();
  const point by = c ? c->applied.scissor : no_offset;
  host_gl_entry<glScissor_op>()(moved(x, by.x), moved(y, by.y), width, height);
  if (c && c->scissor_pending && !is_compiling(c)) c->scissor_pending = false;
}

void own_call<glBlitFramebuffer_op>::call(GLint source_left, GLint source_bottom, GLint source_right, GLint source_top,
                                          GLint left, GLint bottom, GLint right, GLint top, GLbitfield mask,
                                          GLenum filter) {
  blit_framebuffer<glBlitFramebuffer_op>({source_left, source_bottom, source_right, source_top},
                                         {left, bottom, right, top}, mask, filter);
}

void own_call<glBlitFramebufferEXT_op>::call(GLint source_left, GLint source_bottom, GLint source_right,
                                             GLint source_top, GLint left, GLint bottom, GLint right, GLint top,
                                             GLbitfield mask, GLenum filter) {
  blit_framebuffer<glBlitFramebufferEXT_op>({source_left, source_bottom, source_right, source_top},
                                            {left, bottom, right, top}, mask, filter);
}

// glWindowPos(name, suffix, type, form that the host is given): shorts go to the host as ints.
#define WINDOW_POS_2(name, suffix, type, host_name)          \
  void own_call<name##suffix##_op>::call(type x, type y) {   \
    set_raster_position<host_name##suffix##_op>(x, y);       \
  }                                                          \
  void own_call<name##v##suffix##_op>::call(const type* v) { \
    set_raster_position<host_name##suffix##_op>(v[0], v[1]); \
  }
#define WINDOW_POS_3(name, suffix, type, host_name)                \
  void own_call<name##suffix##_op>::call(type x, type y, type z) { \
    set_raster_position<host_name##suffix##_op>(x, y, z);          \
  }                                                                \
  void own_call<name##v##suffix##_op>::call(const type* v) {       \
    set_raster_position<host_name##suffix##_op>(v[0], v[1], v[2]); \
  }
#define WINDOW_POS_FORMS(suffix)                               \
  WINDOW_POS_2(glWindowPos2d, suffix, GLdouble, glWindowPos2d) \
  WINDOW_POS_2(glWindowPos2f, suffix, GLfloat, glWindowPos2f)  \
  WINDOW_POS_2(glWindowPos2i, suffix, GLint, glWindowPos2i)    \
  WINDOW_POS_2(glWindowPos2s, suffix, GLshort, glWindowPos2i)  \
  WINDOW_POS_3(glWindowPos3d, suffix, GLdouble, glWindowPos3d) \
  WINDOW_POS_3(glWindowPos3f, suffix, GLfloat, glWindowPos3f)  \
  WINDOW_POS_3(glWindowPos3i, suffix, GLint, glWindowPos3i)    \
  WINDOW_POS_3(glWindowPos3s, suffix, GLshort, glWindowPos3i)
WINDOW_POS_FORMS()
WINDOW_POS_FORMS(ARB)
