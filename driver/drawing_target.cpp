#include "drawing_target.h"

#include "host.h"

bool has_share(const context* c) {
  return c && c->has_share && c->draw.hwnd;
}

bool is_compiling(const context* c) {
  return c->has_lists && host_integer(GL_LIST_INDEX) != 0;
}

void find_window_drawn(context* c) {
  const bool has_objects = host_has<glBindFramebuffer_op>() || host_has<glBindFramebufferEXT_op>();
  c->window_drawn = !has_objects || host_integer(GL_DRAW_FRAMEBUFFER_BINDING) == 0;
}

GLint host_integer(GLenum name) {
  GLint value = 0;
  host_gl_entry<glGetIntegerv_op>()(name, &value);
  return value;
}
