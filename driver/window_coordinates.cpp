#include "window_coordinates.h"

#include <cstring>

namespace {

constexpr point no_offset = {0, 0};

// Offsets may lie far out; a sum that overflows is no window's any more, and only has to be defined.
GLint sum(GLint a, GLint b) {
  return static_cast<GLint>(static_cast<GLuint>(a) + static_cast<GLuint>(b));
}

GLint moved(GLshort value, GLint by) {
  return sum(value, by);
}
GLint moved(GLint value, GLint by) {
  return sum(value, by);
}
GLfloat moved(GLfloat value, GLint by) {
  return value + static_cast<GLfloat>(by);
}
GLdouble moved(GLdouble value, GLint by) {
  return value + by;
}

GLint host_integer(GLenum name) {
  GLint value = 0;
  host_gl_entry<glGetIntegerv_op>()(name, &value);
  return value;
}

// What would be changed now would go into a display list, or leave a token in the feedback buffer.
bool is_changeable(const context* c) {
  return !is_compiling(c) && (!c->has_raster_position || host_integer(GL_RENDER_MODE) == GL_RENDER);
}

template <class Op>
void move_box(GLenum name, point* applied, point wanted) {
  GLint box[4] = {0, 0, -1, -1};
  host_gl_entry<glGetIntegerv_op>()(name, box);
  if (box[3] < 0) return;  // inside glBegin and glEnd
  host_gl_entry<Op>()(sum(box[0], sum(wanted.x, -applied->x)), sum(box[1], sum(wanted.y, -applied->y)), box[2], box[3]);
  *applied = wanted;
}

// An empty bitmap moves the raster position and touches nothing else that is kept with it. It needs a complete
// framebuffer, so it is moved only while the window is drawn to.
void move_raster_position(const context* c, point* applied, point wanted) {
  if (!c->has_raster_position || *applied == wanted) return;
  const auto x = static_cast<GLfloat>(sum(wanted.x, -applied->x));
  const auto y = static_cast<GLfloat>(sum(wanted.y, -applied->y));
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

// The offset that drawing has now. It is a window's, and its context may be bound to a pbuffer next.
point drawing_offset(const context* c) {
  return c->window_drawn && c->draw.hwnd ? c->offset : no_offset;
}

// Brings the host's values to it.
void settle(context* c) {
  apply_offset(c, drawing_offset(c));
}

void find_window_drawn(context* c) {
  const bool has_objects = host_has<glBindFramebuffer_op>() || host_has<glBindFramebufferEXT_op>();
  c->window_drawn = !has_objects || host_integer(GL_DRAW_FRAMEBUFFER_BINDING) == 0;
}

bool has_offset(const context* c) {
  return c && c->offset != no_offset;
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
  settle(c);
}

template <class Op>
void delete_framebuffers(GLsizei n, const GLuint* framebuffers) {
  context* c = calling_context();
  host_gl_entry<Op>()(n, framebuffers);
  if (!has_offset(c)) return;
  find_window_drawn(c);
  settle(c);
}

template <class Op>
void blit_framebuffer(const GLint (&source)[4], const GLint (&target)[4], GLbitfield mask, GLenum filter) {
  const context* c = calling_context();
  point from = no_offset, to = no_offset;
  if (has_offset(c)) {
    if (c->read.hwnd && host_integer(GL_READ_FRAMEBUFFER_BINDING) == 0) from = c->offset;
    to = drawing_offset(c);
  }
  host_gl_entry<Op>()(sum(source[0], from.x), sum(source[1], from.y), sum(source[2], from.x), sum(source[3], from.y),
                      sum(target[0], to.x), sum(target[1], to.y), sum(target[2], to.x), sum(target[3], to.y), mask,
                      filter);
}

point raster_offset() {
  const context* c = calling_context();
  return c ? c->applied.raster : no_offset;
}

// Inside glBegin and glEnd, where nothing can be asked: -1.
GLint attribute_depth() {
  GLint depth = -1;
  host_gl_entry<glGetIntegerv_op>()(GL_ATTRIB_STACK_DEPTH, &depth);
  return depth;
}

void restore_offsets(applied_offsets* to, const applied_offsets& from, GLbitfield mask) {
  if (mask & GL_VIEWPORT_BIT) to->viewport = from.viewport;
  if (mask & GL_SCISSOR_BIT) to->scissor = from.scissor;
  if (mask & GL_CURRENT_BIT) to->raster = from.raster;
}

// What an offset is contained in.
struct shifted_values {
  GLint viewport[4], scissor[4];
  GLfloat raster[4];
};

shifted_values ask_shifted_values() {
  shifted_values values{};
  host_gl_entry<glGetIntegerv_op>()(GL_VIEWPORT, values.viewport);
  host_gl_entry<glGetIntegerv_op>()(GL_SCISSOR_BOX, values.scissor);
  host_gl_entry<glGetFloatv_op>()(GL_CURRENT_RASTER_POSITION, values.raster);
  return values;
}

// The groups of `mask` that a pop brought back. Some hosts leave a group out that did not change since the last push,
// also when it changed since an earlier one; what was brought back under another offset is not what it was before.
GLbitfield restored_groups(GLbitfield mask, const shifted_values& before, const shifted_values& after) {
  if (memcmp(before.viewport, after.viewport, sizeof before.viewport) == 0) mask &= ~GL_VIEWPORT_BIT;
  if (memcmp(before.scissor, after.scissor, sizeof before.scissor) == 0) mask &= ~GL_SCISSOR_BIT;
  // NOLINTNEXTLINE(bugprone-suspicious-memory-comparison): it is the host's bits that were brought back
  if (memcmp(before.raster, after.raster, sizeof before.raster) == 0) mask &= ~GL_CURRENT_BIT;
  return mask;
}

void pop_under_other_offset(context* c, const attribute_level& level) {
  const shifted_values before = ask_shifted_values();
  host_gl_entry<glPopAttrib_op>()();
  restore_offsets(&c->applied, level.applied, restored_groups(level.mask, before, ask_shifted_values()));
  settle(c);
}

}  // namespace

bool is_compiling(const context* c) {
  return c->has_raster_position && host_integer(GL_LIST_INDEX) != 0;
}

void settle_new_binding(context* c) {
  if (!c->initialized) initialize(c);
  settle(c);
}

void copy_offsets(context* destination, const context* source, GLbitfield mask) {
  restore_offsets(&destination->applied, source->applied, mask);
}

template <>
void forward<glViewportOffsetZ4_op, void>(GLint x, GLint y) {
  context* c = calling_context();
  if (!c) return;
  settle_size(c);
  find_window_drawn(c);
  c->offset = {x, y};
  settle(c);
}

template <>
void forward<glViewport_op, void>(GLint x, GLint y, GLsizei width, GLsizei height) {
  context* c = calling_context();
  const point by = c ? c->applied.viewport : no_offset;
  host_gl_entry<glViewport_op>()(sum(x, by.x), sum(y, by.y), width, height);
  if (c && c->viewport_pending && !is_compiling(c)) c->viewport_pending = false;
}

template <>
void forward<glScissor_op, void>(GLint x, GLint y, GLsizei width, GLsizei height) {
  context* c = calling_context();
  const point by = c ? c->applied.scissor : no_offset;
  host_gl_entry<glScissor_op>()(sum(x, by.x), sum(y, by.y), width, height);
  if (c && c->scissor_pending && !is_compiling(c)) c->scissor_pending = false;
}

// Shorts go to the host as ints: with the offset they may need more bits.
#define WINDOW_POS_CALL_2(op, by) host_gl_entry<op>()(moved(x, by.x), moved(y, by.y))
#define WINDOW_POS_CALL_3(op, by) host_gl_entry<op>()(moved(x, by.x), moved(y, by.y), z)
#define WINDOW_POS_VALUES_2       v[0], v[1]
#define WINDOW_POS_VALUES_3       v[0], v[1], v[2]
#define WINDOW_POS_HOST_d         d
#define WINDOW_POS_HOST_f         f
#define WINDOW_POS_HOST_i         i
#define WINDOW_POS_HOST_s         i

#define WINDOW_POS_OP_NAMED(dimensions, letter, suffix) glWindowPos##dimensions##letter##suffix##_op
#define WINDOW_POS_OP(dimensions, letter, suffix)       WINDOW_POS_OP_NAMED(dimensions, letter, suffix)
#define WINDOW_POS_FORM(dimensions, letter, type, suffix)                                                     \
  template <>                                                                                                 \
  void forward<glWindowPos##dimensions##letter##suffix##_op, void>(WINDOW_POS_ARGUMENTS_##dimensions(type)) { \
    using host_op = WINDOW_POS_OP(dimensions, WINDOW_POS_HOST_##letter, suffix);                              \
    const point by = raster_offset();                                                                         \
    if (host_has<host_op>()) WINDOW_POS_CALL_##dimensions(host_op, by);                                       \
  }                                                                                                           \
  template <>                                                                                                 \
  void forward<glWindowPos##dimensions##letter##v##suffix##_op, void>(const type* v) {                        \
    forward<glWindowPos##dimensions##letter##suffix##_op, void>(WINDOW_POS_VALUES_##dimensions);              \
  }
WINDOW_POS_FORMS(WINDOW_POS_FORM)
#undef WINDOW_POS_FORM

template <>
void forward<glBlitFramebuffer_op, void>(GLint source_left, GLint source_bottom, GLint source_right, GLint source_top,
                                         GLint left, GLint bottom, GLint right, GLint top, GLbitfield mask,
                                         GLenum filter) {
  blit_framebuffer<glBlitFramebuffer_op>({source_left, source_bottom, source_right, source_top},
                                         {left, bottom, right, top}, mask, filter);
}

template <>
void forward<glBlitFramebufferEXT_op, void>(GLint source_left, GLint source_bottom, GLint source_right,
                                            GLint source_top, GLint left, GLint bottom, GLint right, GLint top,
                                            GLbitfield mask, GLenum filter) {
  blit_framebuffer<glBlitFramebufferEXT_op>({source_left, source_bottom, source_right, source_top},
                                            {left, bottom, right, top}, mask, filter);
}

template <>
void forward<glBindFramebuffer_op, void>(GLenum target, GLuint framebuffer) {
  bind_framebuffer<glBindFramebuffer_op>(target, framebuffer);
}

template <>
void forward<glBindFramebufferEXT_op, void>(GLenum target, GLuint framebuffer) {
  bind_framebuffer<glBindFramebufferEXT_op>(target, framebuffer);
}

template <>
void forward<glDeleteFramebuffers_op, void>(GLsizei n, const GLuint* framebuffers) {
  delete_framebuffers<glDeleteFramebuffers_op>(n, framebuffers);
}

template <>
void forward<glDeleteFramebuffersEXT_op, void>(GLsizei n, const GLuint* framebuffers) {
  delete_framebuffers<glDeleteFramebuffersEXT_op>(n, framebuffers);
}

// The level is that of the host's own stack, since pushes also come from display lists and may fail; a level that was
// noted and then not pushed is above the top and is noted anew before it is popped.
template <>
void forward<glPushAttrib_op, void>(GLbitfield mask) {
  context* c = calling_context();
  if (c) {
    const GLint depth = attribute_depth();
    if (depth >= 0 && depth < attribute_level_count) c->levels[depth] = {mask, c->applied};
  }
  host_gl_entry<glPushAttrib_op>()(mask);
}

template <>
void forward<glPopAttrib_op, void>() {
  context* c = calling_context();
  const GLint depth = c ? attribute_depth() : -1;
  const bool is_noted = depth >= 1 && depth <= attribute_level_count;
  if (is_noted && c->levels[depth - 1].applied != c->applied) {
    pop_under_other_offset(c, c->levels[depth - 1]);
  } else {
    host_gl_entry<glPopAttrib_op>()();
  }
}

template <>
void forward<glEndList_op, void>() {
  context* c = calling_context();
  host_gl_entry<glEndList_op>()();
  if (c) settle(c);
}

template <>
GLint forward<glRenderMode_op, GLint>(GLenum mode) {
  context* c = calling_context();
  const GLint result = host_gl_entry<glRenderMode_op>()(mode);
  if (c) settle(c);
  return result;
}
