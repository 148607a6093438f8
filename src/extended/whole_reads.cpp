// Reads of textures and of framebuffer objects, which are whole on every part, and which the first one answers: with
// what was drawn into them, too, of which the application's own context knows nothing. That context is called as well,
// for the errors.
#include <algorithm>

#include "sequential/broadcast.h"
#include "threaded/encoders.h"
#include "wgl/records/glrc.h"

namespace {

template <class Op>
constexpr u32 everyone_slot = parameter_count<Op>;

// Of glReadPixels: whether it reads a framebuffer object.
constexpr u32 whole_slot = everyone_slot<glReadPixels_op> + 1;

// Into a pack buffer each part puts its own.
template <class Op, class... Parameters>
void encode_read(Parameters... arguments) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  mirror<Op>(state, arguments...);
  begin_cmd(state)->args[everyone_slot<Op>] = state->glrc->client_state.pack_buffer != 0;
  push<Op>(state, arguments...);
}

template <class Op, class... Parameters>
void replay_read(const replay_scene& on, Parameters... arguments) {
  if (on.part == 0 || on.cmd->args[everyone_slot<Op>]) entry_in<Op>(on.system)(arguments...);
}

}  // namespace

void changed<glGetTexImage_op>::encode(GLenum target, GLint level, GLenum format, GLenum type, void* pixels) {
  encode_read<glGetTexImage_op>(target, level, format, type, pixels);
}

void changed<glGetTexImage_op>::replay(const replay_scene& on, GLenum target, GLint level, GLenum format, GLenum type,
                                       void* pixels) {
  replay_read<glGetTexImage_op>(on, target, level, format, type, pixels);
}

void changed<glGetCompressedTexImage_op>::encode(GLenum target, GLint level, void* img) {
  encode_read<glGetCompressedTexImage_op>(target, level, img);
}

void changed<glGetCompressedTexImage_op>::replay(const replay_scene& on, GLenum target, GLint level, void* img) {
  replay_read<glGetCompressedTexImage_op>(on, target, level, img);
}

void glGetTextureImage_op::encode(GLuint texture, GLint level, GLenum format, GLenum type, GLsizei bytes,
                                  void* pixels) {
  encode_read<glGetTextureImage_op>(texture, level, format, type, bytes, pixels);
}

void glGetTextureImage_op::replay(const replay_scene& on, GLuint texture, GLint level, GLenum format, GLenum type,
                                  GLsizei bytes, void* pixels) {
  replay_read<glGetTextureImage_op>(on, texture, level, format, type, bytes, pixels);
}

void glGetCompressedTextureImage_op::encode(GLuint texture, GLint level, GLsizei bytes, void* pixels) {
  encode_read<glGetCompressedTextureImage_op>(texture, level, bytes, pixels);
}

void glGetCompressedTextureImage_op::replay(const replay_scene& on, GLuint texture, GLint level, GLsizei bytes,
                                            void* pixels) {
  replay_read<glGetCompressedTextureImage_op>(on, texture, level, bytes, pixels);
}

void glGetTextureSubImage_op::encode(GLuint texture, GLint level, GLint xoffset, GLint yoffset, GLint zoffset,
                                     GLsizei width, GLsizei height, GLsizei depth, GLenum format, GLenum type,
                                     GLsizei bytes, void* pixels) {
  encode_read<glGetTextureSubImage_op>(texture, level, xoffset, yoffset, zoffset, width, height, depth, format, type,
                                       bytes, pixels);
}

void glGetTextureSubImage_op::replay(const replay_scene& on, GLuint texture, GLint level, GLint xoffset, GLint yoffset,
                                     GLint zoffset, GLsizei width, GLsizei height, GLsizei depth, GLenum format,
                                     GLenum type, GLsizei bytes, void* pixels) {
  replay_read<glGetTextureSubImage_op>(on, texture, level, xoffset, yoffset, zoffset, width, height, depth, format,
                                       type, bytes, pixels);
}

void glGetCompressedTextureSubImage_op::encode(GLuint texture, GLint level, GLint xoffset, GLint yoffset, GLint zoffset,
                                               GLsizei width, GLsizei height, GLsizei depth, GLsizei bytes,
                                               void* pixels) {
  encode_read<glGetCompressedTextureSubImage_op>(texture, level, xoffset, yoffset, zoffset, width, height, depth, bytes,
                                                 pixels);
}

void glGetCompressedTextureSubImage_op::replay(const replay_scene& on, GLuint texture, GLint level, GLint xoffset,
                                               GLint yoffset, GLint zoffset, GLsizei width, GLsizei height,
                                               GLsizei depth, GLsizei bytes, void* pixels) {
  replay_read<glGetCompressedTextureSubImage_op>(on, texture, level, xoffset, yoffset, zoffset, width, height, depth,
                                                 bytes, pixels);
}

void glGetnCompressedTexImage_op::encode(GLenum target, GLint lod, GLsizei bytes, void* pixels) {
  encode_read<glGetnCompressedTexImage_op>(target, lod, bytes, pixels);
}

void glGetnCompressedTexImage_op::replay(const replay_scene& on, GLenum target, GLint lod, GLsizei bytes,
                                         void* pixels) {
  replay_read<glGetnCompressedTexImage_op>(on, target, lod, bytes, pixels);
}

void glGetnTexImage_op::encode(GLenum target, GLint level, GLenum format, GLenum type, GLsizei bytes, void* pixels) {
  encode_read<glGetnTexImage_op>(target, level, format, type, bytes, pixels);
}

void glGetnTexImage_op::replay(const replay_scene& on, GLenum target, GLint level, GLenum format, GLenum type,
                               GLsizei bytes, void* pixels) {
  replay_read<glGetnTexImage_op>(on, target, level, format, type, bytes, pixels);
}

// Of the window each part gives its share.
void changed<glReadPixels_op>::encode(GLint x, GLint y, GLsizei width, GLsizei height, GLenum format, GLenum type,
                                      void* pixels) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  // GL looks at all arguments of a read of nothing.
  mirror<glReadPixels_op>(state, x, y, std::min(width, 0), std::min(height, 0), format, type, pixels);
  __osw_cmd* cmd = begin_cmd(state);
  cmd->args[everyone_slot<glReadPixels_op>] = state->glrc->client_state.pack_buffer != 0;
  cmd->args[whole_slot] = state->glrc->read_framebuffer != 0;
  push<glReadPixels_op>(state, x, y, width, height, format, type, pixels);
}

void changed<glReadPixels_op>::replay(const replay_scene& on, GLint x, GLint y, GLsizei width, GLsizei height,
                                      GLenum format, GLenum type, void* pixels) {
  if (!on.cmd->args[whole_slot]) return glReadPixels_op::replay(on, x, y, width, height, format, type, pixels);
  replay_read<glReadPixels_op>(on, x, y, width, height, format, type, pixels);
}

void changed<glReadPixels_op>::broadcast(GLint x, GLint y, GLsizei width, GLsizei height, GLenum format, GLenum type,
                                         void* pixels) {
  const __osw_thread_state* state = __osw_fetch_thread_state();
  if (!state->glrc->read_framebuffer) return glReadPixels_op::broadcast(x, y, width, height, format, type, pixels);
  __osw_for_each_part(state, [=](i32 part) {
    GLint pack_buffer = 0;
    if (part > 0) sys_gl<glGetIntegerv_op>(state)(GL_PIXEL_PACK_BUFFER_BINDING, &pack_buffer);
    if (part > 0 && !pack_buffer) return;
    sys_gl<glReadPixels_op>(state)(x, y, width, height, format, type, pixels);
  });
}
