// Which framebuffer objects are bound: those are whole on every part, while a part has but its share of the window.
#include "sequential/broadcast.h"
#include "threaded/encoders.h"
#include "wgl/records/glrc.h"

namespace {

void note_bound(const __osw_thread_state* state, GLenum target, GLuint framebuffer) {
  if (target == GL_FRAMEBUFFER || target == GL_DRAW_FRAMEBUFFER) state->glrc->draw_framebuffer = framebuffer;
  if (target == GL_FRAMEBUFFER || target == GL_READ_FRAMEBUFFER) state->glrc->read_framebuffer = framebuffer;
}

// One that is bound gives way to the window.
void note_deleted(const __osw_thread_state* state, GLsizei count, const GLuint* framebuffers) {
  __osw_glrc* glrc = state->glrc;
  for (GLsizei i = 0; framebuffers && i < count; ++i) {
    if (glrc->draw_framebuffer == framebuffers[i]) glrc->draw_framebuffer = 0;
    if (glrc->read_framebuffer == framebuffers[i]) glrc->read_framebuffer = 0;
  }
}

}  // namespace

void changed<glBindFramebuffer_op>::encode(GLenum target, GLuint framebuffer) {
  encoder<glBindFramebuffer_op>()(target, framebuffer);
  note_bound(__osw_fetch_thread_state(), target, framebuffer);
}

void changed<glBindFramebuffer_op>::broadcast(GLenum target, GLuint framebuffer) {
  repeat_on_each_part<glBindFramebuffer_op>(target, framebuffer);
  note_bound(__osw_fetch_thread_state(), target, framebuffer);
}

void changed<glDeleteFramebuffers_op>::encode(GLsizei count, const GLuint* framebuffers) {
  encoder<glDeleteFramebuffers_op>()(count, framebuffers);
  note_deleted(__osw_fetch_thread_state(), count, framebuffers);
}

void changed<glDeleteFramebuffers_op>::broadcast(GLsizei count, const GLuint* framebuffers) {
  repeat_on_each_part<glDeleteFramebuffers_op>(count, framebuffers);
  note_deleted(__osw_fetch_thread_state(), count, framebuffers);
}
