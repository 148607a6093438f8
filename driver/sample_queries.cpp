// Queries that count samples, under a context whose drawable is spared. Programs draw only what such a query has seen,
// so from the first one on the context draws to the application's own window: nobody sees it there, but it has all
// pixels.
#include "binding.h"
#include "drawing_target.h"
#include "host.h"
#include "own_ops.h"

namespace {

bool counts_samples(GLenum target) {
  switch (target) {
    case GL_SAMPLES_PASSED:
    case GL_ANY_SAMPLES_PASSED:
    case GL_ANY_SAMPLES_PASSED_CONSERVATIVE:
    case GL_FRAGMENT_SHADER_INVOCATIONS_ARB:
      return true;
    default:
      return false;
  }
}

// Depth and stencil of the window are what they were before the context was spared. What has been drawn since is lost,
// and then nothing may hide what is counted now: a program that sees too much shows too much for a frame.
void clear_tests(context* c) {
  find_window_drawn(c);
  if (!c->window_drawn || is_compiling(c)) return;
  host_gl_entry<glPushAttrib_op>()(GL_DEPTH_BUFFER_BIT | GL_STENCIL_BUFFER_BIT | GL_SCISSOR_BIT);
  host_gl_entry<glDisable_op>()(GL_SCISSOR_TEST);
  host_gl_entry<glDepthMask_op>()(GL_TRUE);
  host_gl_entry<glStencilMask_op>()(~0u);
  host_gl_entry<glClear_op>()(GL_DEPTH_BUFFER_BIT | GL_STENCIL_BUFFER_BIT);
  host_gl_entry<glPopAttrib_op>()();
}

// Returns whether the calling thread's context is current on the host, with all its pixels.
bool give_pixels(context* c) {
  c->counts_samples = true;
  if (!c->spared) return true;
  unsettle_drawables(this_thread());
  if (!bind_current()) return false;
  clear_tests(c);
  return true;
}

template <class Op>
void begin_query(GLenum target, GLuint query) {
  context* c = calling_context();
  if (c && !c->counts_samples && counts_samples(target) && !give_pixels(c)) return;
  host_gl_entry<Op>()(target, query);
}

}  // namespace

void own_call<glBeginQuery_op>::call(GLenum target, GLuint query) {
  begin_query<glBeginQuery_op>(target, query);
}

void own_call<glBeginQueryARB_op>::call(GLenum target, GLuint query) {
  begin_query<glBeginQueryARB_op>(target, query);
}

void own_call<glBeginQueryEXT_op>::call(GLenum target, GLuint query) {
  begin_query<glBeginQueryEXT_op>(target, query);
}
