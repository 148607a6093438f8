#include "drawing_target.h"

#include "host.h"

namespace {

bool has_framebuffer_objects() {
  return host_has<glBindFramebuffer_op>() || host_has<glBindFramebufferEXT_op>();
}

}  // namespace

bool has_share(const context* c) {
  return c && c->has_share && c->draw.hwnd;
}

bool is_compiling(const context* c) {
  return c->has_lists && host_integer(GL_LIST_INDEX) != 0;
}

void find_window_drawn(context* c) {
  c->window_drawn = !has_framebuffer_objects() || host_integer(GL_DRAW_FRAMEBUFFER_BINDING) == 0;
}

bool is_window_read() {
  if (!has_framebuffer_objects()) return true;
  const bool has_two = host_has<glBlitFramebuffer_op>() || host_has<glBlitFramebufferEXT_op>();
  return host_integer(has_two ? GL_READ_FRAMEBUFFER_BINDING : GL_FRAMEBUFFER_BINDING) == 0;
}

GLint host_integer(GLenum name) {
  GLint value = 0;
  host_gl_entry<glGetIntegerv_op>()(name, &value);
  return value;
}
