// The size of the application's window, which that of a drawable may not be, and drawables that the user never sees.
#include "binding.h"
#include "host.h"
#include "own_ops.h"
#include "window_offset.h"

// One of the driver's two private calls, on the calling thread's context; without one it does nothing. In pixels. A
// context that was never given a viewport, or a scissor box, gets it from the first call. (-1, -1): the drawable is not
// what the user sees, and is spared until the context is bound anew or gets another size. Other negative values do
// nothing.
void own_call<glDrawableSizeZ4_op>::call(GLint width, GLint height) {
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

// A spared context's frames are never swapped, so nothing else would make the host draw what it has put off: a frame
// begins with a clear, and what was drawn before is handed over with it.
void own_call<glClear_op>::call(GLbitfield mask) {
  const context* c = calling_context();
  host_gl_entry<glClear_op>()(mask);
  if (c && c->spared) host_gl_entry<glFlush_op>()();
}
