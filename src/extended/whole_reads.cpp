// Reads of textures, which are whole on every part.
#include "extended/first_part_reads.h"

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
