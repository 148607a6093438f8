#include "window_offset.h"

#include "binding.h"
#include "host.h"
#include "own_ops.h"

namespace {

// What would be changed now would go into a display list, or leave a token in the feedback buffer.
bool is_changeable(const context* c) {
  return !is_compiling(c) && (!c->has_raster_position || host_integer(GL_RENDER_MODE) == GL_RENDER);
}

template <class Op>
void move_box(GLenum name, point* applied, point wanted) {
  GLint box[4] = {0, 0, -1, -1};
  host_gl_entry<glGetIntegerv_op>()(name, box);
  if (box[3] < 0) return;  // inside glBegin and glEnd
  host_gl_entry<Op>()(moved(box[0], moved(wanted.x, -applied->x)), moved(box[1], moved(wanted.y, -applied->y)), box[2],
                      box[3]);
  *applied = wanted;
}

// An empty bitmap moves the raster position and touches nothing else that is kept with it. It needs a complete
// framebuffer, so it is moved only while the window is drawn to.
void move_raster_position(const context* c, point* applied, point wanted) {
  if (!c->has_raster_position || *applied == wanted) return;
  const auto x = static_cast<GLfloat>(moved(wanted.x, -applied->x));
  const auto y = static_cast<GLfloat>(moved(wanted.y, -applied->y));
  host_gl_entry<glBitmap_op>()(0, 0, 0, 0, x, y, nullptr);
  *applied = wanted;
}

void apply_offset(context* c, point wanted) {
  const applied_offsets& applied = c->applied;
  if (applied.viewport == wanted && applied.scissor == wanted && applied.raster == wanted) return;
  if (!is_changeable(c)) return;
  if (applied.viewport != wanted) move_box<glViewport_op>(GL_VIEWPORT, &c->applied.viewport, wanted);
  if (applied.scissor != wanted) move_box<glScissor_op>(GL_SCISSOR_BOX, &c->applied.scissor, wanted);
  move_raster_position(c, &c->applied.raster, wanted);
}

void find_window_drawn(context* c) {
  const bool has_objects = host_has<glBindFramebuffer_op>() || host_has<glBindFramebufferEXT_op>();
  c->window_drawn = !has_objects || host_integer(GL_DRAW_FRAMEBUFFER_BINDING) == 0;
}

// The first call in a context's life, when no error of the application can be pending.
void initialize(context* c) {
  c->initialized = true;
  host_integer(GL_CURRENT_RASTER_POSITION_VALID);
  c->has_raster_position = host_gl_entry<glGetError_op>()() == GL_NO_ERROR;
  if (!c->has_initial_size) return;
  host_gl_entry<glViewport_op>()(0, 0, c->initial_size.cx, c->initial_size.cy);
  host_gl_entry<glScissor_op>()(0, 0, c->initial_size.cx, c->initial_size.cy);
}

template <class Op>
void bind_framebuffer(GLenum target, GLuint framebuffer) {
  context* c = calling_context();
  const bool moves = has_offset(c) && target != GL_READ_FRAMEBUFFER;
  if (moves && c->window_drawn && framebuffer != 0) apply_offset(c, no_offset);
  host_gl_entry<Op>()(target, framebuffer);
  if (!moves) return;
  find_window_drawn(c);
  settle_offset(c);
}

template <class Op>
void delete_framebuffers(GLsizei n, const GLuint* framebuffers) {
  context* c = calling_context();
  host_gl_entry<Op>()(n, framebuffers);
  if (!has_offset(c)) return;
  find_window_drawn(c);
  settle_offset(c);
}

}  // namespace

void settle_new_binding(context* c) {
  if (!c->initialized) initialize(c);
  settle_offset(c);
}

void settle_offset(context* c) {
  apply_offset(c, drawing_offset(c));
}

point drawing_offset(const context* c) {
  return c->window_drawn && c->draw.hwnd ? c->offset : no_offset;
}

bool has_offset(const context* c) {
  return c && c->offset != no_offset;
}

bool is_compiling(const context* c) {
  return c->has_raster_position && host_integer(GL_LIST_INDEX) != 0;
}

GLint host_integer(GLenum name) {
  GLint value = 0;
  host_gl_entry<glGetIntegerv_op>()(name, &value);
  return value;
}

// One of the driver's two private calls, on the calling thread's context; without one it does nothing. x and y in
// pixels, of the lower left corner of the application's window from that of the drawable; either sign.
void own_call<glViewportOffsetZ4_op>::call(GLint x, GLint y) {
  context* c = calling_context();
  if (!c) return;
  settle_size(c);
  find_window_drawn(c);
  c->offset = {x, y};
  settle_offset(c);
}

void own_call<glBindFramebuffer_op>::call(GLenum target, GLuint framebuffer) {
  bind_framebuffer<glBindFramebuffer_op>(target, framebuffer);
}

void own_call<glBindFramebufferEXT_op>::call(GLenum target, GLuint framebuffer) {
  bind_framebuffer<glBindFramebufferEXT_op>(target, framebuffer);
}

void own_call<glDeleteFramebuffers_op>::call(GLsizei n, const GLuint* framebuffers) {
  delete_framebuffers<glDeleteFramebuffers_op>(n, framebuffers);
}

void own_call<glDeleteFramebuffersEXT_op>::call(GLsizei n, const GLuint* framebuffers) {
  delete_framebuffers<glDeleteFramebuffersEXT_op>(n, framebuffers);
}

void own_call<glEndList_op>::call() {
  context* c = calling_context();
  host_gl_entry<glEndList_op>()();
  if (c) settle_offset(c);
}

GLint own_call<glRenderMode_op>::call(GLenum mode) {
  context* c = calling_context();
  const GLint result = host_gl_entry<glRenderMode_op>()(mode);
  if (c) settle_offset(c);
  return result;
}
