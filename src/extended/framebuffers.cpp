// Framebuffer objects are whole on every part, while a part has but its share of the window: a copy from one is each
// part's own, and needs no gathering.
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

bool reads_object(const __osw_thread_state* state) {
  return state->glrc->read_framebuffer != 0;
}

template <class Op, class... Arguments>
void encode_copy(Arguments... arguments) {
  if (!reads_object(__osw_fetch_thread_state())) return encoder<Op>()(arguments...);
  encode_plain<changed<Op>, void>(arguments...);
}

template <class Op, class... Arguments>
void broadcast_copy(Arguments... arguments) {
  if (!reads_object(__osw_fetch_thread_state())) return broadcaster<Op>()(arguments...);
  repeat_on_each_part<Op>(arguments...);
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

void changed<glCopyPixels_op>::encode(GLint x, GLint y, GLsizei width, GLsizei height, GLenum planes) {
  encode_copy<glCopyPixels_op>(x, y, width, height, planes);
}

void changed<glCopyPixels_op>::broadcast(GLint x, GLint y, GLsizei width, GLsizei height, GLenum planes) {
  broadcast_copy<glCopyPixels_op>(x, y, width, height, planes);
}

void changed<glCopyTexImage1D_op>::encode(GLenum target, GLint level, GLenum format, GLint x, GLint y, GLsizei width,
                                          GLint border) {
  encode_copy<glCopyTexImage1D_op>(target, level, format, x, y, width, border);
}

void changed<glCopyTexImage1D_op>::broadcast(GLenum target, GLint level, GLenum format, GLint x, GLint y, GLsizei width,
                                             GLint border) {
  broadcast_copy<glCopyTexImage1D_op>(target, level, format, x, y, width, border);
}

void changed<glCopyTexImage2D_op>::encode(GLenum target, GLint level, GLenum format, GLint x, GLint y, GLsizei width,
                                          GLsizei height, GLint border) {
  encode_copy<glCopyTexImage2D_op>(target, level, format, x, y, width, height, border);
}

void changed<glCopyTexImage2D_op>::broadcast(GLenum target, GLint level, GLenum format, GLint x, GLint y, GLsizei width,
                                             GLsizei height, GLint border) {
  broadcast_copy<glCopyTexImage2D_op>(target, level, format, x, y, width, height, border);
}

void changed<glCopyTexSubImage1D_op>::encode(GLenum target, GLint level, GLint to_x, GLint x, GLint y, GLsizei width) {
  encode_copy<glCopyTexSubImage1D_op>(target, level, to_x, x, y, width);
}

void changed<glCopyTexSubImage1D_op>::broadcast(GLenum target, GLint level, GLint to_x, GLint x, GLint y,
                                                GLsizei width) {
  broadcast_copy<glCopyTexSubImage1D_op>(target, level, to_x, x, y, width);
}

void changed<glCopyTexSubImage2D_op>::encode(GLenum target, GLint level, GLint to_x, GLint to_y, GLint x, GLint y,
                                             GLsizei width, GLsizei height) {
  encode_copy<glCopyTexSubImage2D_op>(target, level, to_x, to_y, x, y, width, height);
}

void changed<glCopyTexSubImage2D_op>::broadcast(GLenum target, GLint level, GLint to_x, GLint to_y, GLint x, GLint y,
                                                GLsizei width, GLsizei height) {
  broadcast_copy<glCopyTexSubImage2D_op>(target, level, to_x, to_y, x, y, width, height);
}

void changed<glCopyTexSubImage3D_op>::encode(GLenum target, GLint level, GLint to_x, GLint to_y, GLint to_z, GLint x,
                                             GLint y, GLsizei width, GLsizei height) {
  encode_copy<glCopyTexSubImage3D_op>(target, level, to_x, to_y, to_z, x, y, width, height);
}

void changed<glCopyTexSubImage3D_op>::broadcast(GLenum target, GLint level, GLint to_x, GLint to_y, GLint to_z, GLint x,
                                                GLint y, GLsizei width, GLsizei height) {
  broadcast_copy<glCopyTexSubImage3D_op>(target, level, to_x, to_y, to_z, x, y, width, height);
}
