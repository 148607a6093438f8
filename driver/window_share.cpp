#include "window_share.h"

#include <atomic>

#include "binding.h"
#include "drawing_target.h"
#include "host.h"
#include "own_ops.h"
#include "report.h"
#include "scissor_cut.h"
#include "spread_process.h"
#include "stand_in.h"
#include "told_version.h"

namespace {

// Whether the host says so by itself: a question for what a context lacks would show in its debug output.
bool is_core_profile() {
  return is_newer(hosts_version(), {3, 1}) && host_integer(GL_CONTEXT_PROFILE_MASK) & GL_CONTEXT_CORE_PROFILE_BIT;
}

bool find_lists() {
  if (is_core_profile()) return false;
  host_integer(GL_LIST_INDEX);
  return host_gl_entry<glGetError_op>()() == GL_NO_ERROR;
}

// The first call in a context's life, when no error of the application can be pending.
void initialize(context* c) {
  c->initialized = true;
  c->has_lists = find_lists();
  if (!c->has_initial_size) return;
  host_gl_entry<glViewport_op>()(0, 0, c->initial_size.cx, c->initial_size.cy);
  host_gl_entry<glScissor_op>()(0, 0, c->initial_size.cx, c->initial_size.cy);
}

void note_initial_size(context* c, SIZE size) {
  c->initial_size = size;
  c->has_initial_size = true;
  c->viewport_pending = c->scissor_pending = false;
}

void set_pending_boxes(context* c, SIZE size) {
  if ((!c->viewport_pending && !c->scissor_pending) || is_compiling(c)) return;
  if (c->viewport_pending) host_gl_entry<glViewport_op>()(0, 0, size.cx, size.cy);
  if (c->scissor_pending) {
    const uncut_scissor uncut(c);
    host_gl_entry<glScissor_op>()(0, 0, size.cx, size.cy);
  }
  c->viewport_pending = c->scissor_pending = false;
}

// A drawable is the window many times over, which whoever runs out of memory should know.
void report_drawable(const context* c, SIZE window) {
  static std::atomic<bool> reported;
  if (reported.exchange(true)) return;
  report("Info: each part draws to a drawable of the window's size, %ld x %ld pixels, and shows %ld x %ld of it",
         window.cx, window.cy, c->share_size.cx, c->share_size.cy);
}

// A share that is all of the window needs no drawable of another size.
void take_share(thread_state* thread, SIZE window) {
  context* c = thread->current;
  RECT client{};
  if (!c->draw.hwnd || !GetClientRect(c->draw.hwnd, &client)) return;
  c->share_size = {client.right, client.bottom};
  const bool is_whole = c->told_offset == point{0, 0} && client.right == window.cx && client.bottom == window.cy;
  const window_place whole = {c->told_offset.x, c->told_offset.y, window};
  c->has_share = place_window(c->draw.hwnd, c->pixel_format, is_whole ? nullptr : &whole) && !is_whole;
  c->cut_pending = true;
  c->offset = c->has_share ? c->told_offset : point{0, 0};
  if (c->has_share) report_drawable(c, window);
  const HDC hosts = stand_in_hdc(c->draw.hwnd);
  if (hosts && c->host_draw && hosts != c->host_draw) unsettle_drawables(thread);
}

// A drawable that the user never sees is spared until the context is bound anew or gets another size.
void spare(thread_state* thread) {
  context* c = thread->current;
  // A context starts with the size of its first drawable, which of a pbuffer only the host knows.
  if (!c->initialized && !c->has_initial_size) bind_current();
  if (c->spared && !c->counts_samples) return;
  c->spared = true;
  unsettle_drawables(thread);
}

void follow_framebuffer(context* c) {
  find_window_drawn(c);
  settle_cut(c);
}

// Whether a read is counted from a share's corner. In the extended mode an object is read whole from one part.
bool reads_share() {
  return !is_spread_process() || is_told_less() || is_window_read();
}

template <class Op>
void bind_framebuffer(GLenum target, GLuint framebuffer) {
  context* c = calling_context();
  host_gl_entry<Op>()(target, framebuffer);
  if (has_share(c) && target != GL_READ_FRAMEBUFFER) follow_framebuffer(c);
}

template <class Op>
void delete_framebuffers(GLsizei n, const GLuint* framebuffers) {
  context* c = calling_context();
  host_gl_entry<Op>()(n, framebuffers);
  if (has_share(c)) follow_framebuffer(c);
}

}  // namespace

void settle_new_binding(context* c) {
  if (!c->initialized) initialize(c);
  if (!c->cut_pending) return;
  if (has_share(c)) find_window_drawn(c);
  settle_cut(c);
}

void look_at_share(context* c) {
  RECT client;
  if (!has_share(c) || !GetClientRect(c->draw.hwnd, &client)) return;
  const bool is_same = client.right == c->share_size.cx && client.bottom == c->share_size.cy;
  c->share_size = {client.right, client.bottom};
  if (!is_same) settle_cut(c);
}

// One of the driver's two private calls, on the calling thread's context; without one it does nothing. x and y in
// pixels, of the lower left corner of the application's window from that of the part's window; either sign. It is in
// force from the next glDrawableSizeZ4 on, so that the two change at once.
void own_call<glViewportOffsetZ4_op>::call(GLint x, GLint y) {
  const thread_state* thread = this_thread();
  if (thread && thread->current) thread->current->told_offset = {x, y};
}

// The other one: the size of the application's window, in pixels, and with it the drawable's. A context that was never
// given a viewport, or a scissor box, gets it from the first call. (-1, -1): the drawable is not what the user sees,
// and is spared; see sample_queries.cpp. Other negative values do nothing. Of a binding that the host has refused from
// the beginning it is the size to begin with.
void own_call<glDrawableSizeZ4_op>::call(GLint width, GLint height) {
  thread_state* thread = this_thread();
  context* c = thread ? thread->current : nullptr;
  if (!c) return;
  if (width == -1 && height == -1) return spare(thread);
  if (width < 0 || height < 0) return;
  if (c->spared) unsettle_drawables(thread);
  c->spared = false;
  take_share(thread, {width, height});
  if (!bind_current()) {
    if (c == refused_context() && !c->initialized) note_initial_size(c, {width, height});
    return;
  }
  settle_size(c);
  set_pending_boxes(c, {width, height});
  if (has_share(c)) find_window_drawn(c);
  settle_cut(c);
}

void own_call<glViewport_op>::call(GLint x, GLint y, GLsizei width, GLsizei height) {
  context* c = calling_context();
  host_gl_entry<glViewport_op>()(x, y, width, height);
  if (c && c->viewport_pending && !is_compiling(c)) c->viewport_pending = false;
}

// Who reads a part's pixels knows only its share, and counts from the share's corner; in the basic mode in a
// framebuffer object too, so that each part gives its piece of what was asked for.
void own_call<glReadPixels_op>::call(GLint x, GLint y, GLsizei width, GLsizei height, GLenum format, GLenum type,
                                     void* pixels) {
  const context* c = calling_context();
  const point by = has_share(c) && reads_share() ? c->offset : point{0, 0};
  host_gl_entry<glReadPixels_op>()(less(x, by.x), less(y, by.y), width, height, format, type, pixels);
}

// A spared context's frames are never swapped, so nothing else would make the host draw what it has put off: a frame
// begins with a clear, and what was drawn before is handed over with it. A part's frame is cut to what the child is
// now.
void own_call<glClear_op>::call(GLbitfield mask) {
  context* c = calling_context();
  if (c) look_at_share(c);
  host_gl_entry<glClear_op>()(mask);
  if (c && c->spared) host_gl_entry<glFlush_op>()();
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
