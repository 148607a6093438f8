#include "drawable_size.h"

#include "window_coordinates.h"

template <>
void forward<glDrawableSizeZ4_op, void>(GLint width, GLint height) {
  thread_state* thread = this_thread();
  context* c = thread ? thread->current : nullptr;
  const bool spared = width == -1 && height == -1;
  if (!c || (!spared && (width < 0 || height < 0))) return;
  // A context starts with the size of its first drawable, which of a pbuffer only the host knows.
  if (spared && !c->initialized && !c->has_initial_size) bind_current();
  if (c->spared != spared) {
    c->spared = spared;
    unsettle_drawables(thread);
  }
  if (spared || (!c->viewport_pending && !c->scissor_pending)) return;
  if (!bind_current() || is_compiling(c)) return;
  const applied_offsets& applied = c->applied;
  if (c->viewport_pending) host_gl_entry<glViewport_op>()(applied.viewport.x, applied.viewport.y, width, height);
  if (c->scissor_pending) host_gl_entry<glScissor_op>()(applied.scissor.x, applied.scissor.y, width, height);
  c->viewport_pending = c->scissor_pending = false;
}

template <>
void forward<glClear_op, void>(GLbitfield mask) {
  const context* c = calling_context();
  host_gl_entry<glClear_op>()(mask);
  if (c && c->spared) host_gl_entry<glFlush_op>()();
}
