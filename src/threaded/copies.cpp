// Framebuffer copies. A part holds only its share of the source, so the rectangle is read back through the workers and
// sent out again as an upload, which reaches every part whole.
#include <cstdlib>

#include "sequential/parts/copy_format.h"
#include "threaded/encoders.h"

namespace {

// What a copy takes away from the workers for its length. The issuing thread's own records are not changed.
struct saved_state {
  u32 pack_buffer;
  u32 unpack_buffer;
  __osw_pixel_store pack;
  __osw_pixel_store unpack;
};

// Clears the first `count` fields on the workers where they are not 0.
void clear_store(__osw_thread_state* state, const __osw_pixel_store& saved, GLenum pixel_store_field::*name,
                 int count) {
  for (int i = 0; i < count; ++i) {
    const pixel_store_field& field = pixel_store_fields[i];
    if (get_field(saved, field)) push<glPixelStorei_op>(state, field.*name, 0);
  }
}

void restore_store(__osw_thread_state* state, const __osw_pixel_store& saved, GLenum pixel_store_field::*name) {
  for (int i = 0; i < saved_pixel_store_fields; ++i) {
    const pixel_store_field& field = pixel_store_fields[i];
    if (const i32 value = get_field(saved, field)) push<glPixelStorei_op>(state, field.*name, value);
  }
}

void unbind_buffers(__osw_thread_state* state, saved_state* saved) {
  const __osw_client_state& client_state = state->glrc->client_state;
  saved->pack_buffer = client_state.pack_buffer;
  saved->unpack_buffer = client_state.unpack_buffer;
  if (saved->pack_buffer) push<glBindBuffer_op>(state, GL_PIXEL_PACK_BUFFER, 0);
  if (saved->unpack_buffer) push<glBindBuffer_op>(state, GL_PIXEL_UNPACK_BUFFER, 0);
}

// Both bindings come back on the pack target: the unpack binding stays 0, and the pack binding is overwritten.
void rebind_buffers(__osw_thread_state* state, const saved_state& saved) {
  if (saved.pack_buffer) push<glBindBuffer_op>(state, GL_PIXEL_PACK_BUFFER, saved.pack_buffer);
  if (saved.unpack_buffer) push<glBindBuffer_op>(state, GL_PIXEL_PACK_BUFFER, saved.unpack_buffer);
}

// The unpack buffer that the application's own context has bound, if it follows at all. The record keeps one that was
// deleted since, and to bind that one would make a new buffer of its name.
GLuint bound_unpack_buffer(const __osw_thread_state* state, const saved_state& saved) {
  GLint bound = 0;
  if (saved.unpack_buffer && mirrors()) sys_gl<glGetIntegerv_op>(state)(GL_PIXEL_UNPACK_BUFFER_BINDING, &bound);
  return static_cast<GLuint>(bound);
}

// Enters the upload encoder as if no unpack buffer were bound, on the application's own context too: the pixels lie in
// memory whatever is bound, and travel as a blob of the upload.
template <class Upload>
void upload_from_memory(__osw_thread_state* state, const saved_state& saved, Upload upload, const void* pixels) {
  u32* binding = &state->glrc->client_state.unpack_buffer;
  const GLuint bound = bound_unpack_buffer(state, saved);
  *binding = 0;
  if (bound) mirror<glBindBuffer_op>(state, GL_PIXEL_UNPACK_BUFFER, 0);
  upload(pixels);
  if (bound) mirror<glBindBuffer_op>(state, GL_PIXEL_UNPACK_BUFFER, bound);
  *binding = saved.unpack_buffer;
}

// The sequence of all six copies. `upload` enters the upload's encoder with the pixels. Only a copy of pixels clears
// the unpack state; the others upload under the application's.
template <class Upload>
void copy(__osw_thread_state* state, const copy_format& format, const copied_rectangle& from, bool clears_unpack,
          const char* function, Upload upload) {
  const __osw_glrc* glrc = state->glrc;
  const __osw_pixel_store read_pack{.alignment = glrc->pack_store.alignment};
  // The application's own context uploads under the unpack state as it is, whatever the workers' is during the upload.
  const u64 bytes = __osw_copy_buffer_size(format, from.width, from.height, read_pack, glrc->unpack_store);
  void* buffer = __osw_create_copy_buffer(bytes, function);
  if (!buffer) return;
  saved_state saved{.pack = glrc->pack_store, .unpack = glrc->unpack_store};
  unbind_buffers(state, &saved);
  clear_store(state, saved.pack, &pixel_store_field::pack, saved_image_fields);
  encoder<glReadPixels_op>()(from.x, from.y, from.width, from.height, format.format, format.type, buffer);
  if (clears_unpack) clear_store(state, saved.unpack, &pixel_store_field::unpack, saved_pixel_store_fields);
  upload_from_memory(state, saved, upload, buffer);
  free(buffer);
  rebind_buffers(state, saved);
  restore_store(state, saved.pack, &pixel_store_field::pack);
  if (clears_unpack) restore_store(state, saved.unpack, &pixel_store_field::unpack);
}

// Of level 0, whatever level is copied to.
GLenum __osw_tex_internal_format(GLenum target) {
  GLint value = 0;
  encoder<glGetTexLevelParameteriv_op>()(target, 0, GL_TEXTURE_INTERNAL_FORMAT, &value);
  return static_cast<GLenum>(value);
}

// A copy into a texture: `internal_format` tells what kind of pixels it takes.
template <class Op, class Upload>
void copy_to_texture(__osw_thread_state* state, GLenum internal_format, const copied_rectangle& from, Upload upload) {
  const copy_format format = __osw_copy_format(state, __osw_kind_of(internal_format));
  copy(state, format, from, false, Op::name, [&](const void* pixels) { upload(format, pixels); });
}

GLenum kind_of_pixels(GLenum type) {
  return type == GL_COLOR || type == GL_DEPTH ? type : GL_STENCIL;
}

}  // namespace

void glCopyPixels_op::encode(GLint x, GLint y, GLsizei width, GLsizei height, GLenum type) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  mirror<glCopyPixels_op>(state, x, y, width, height, type);
  const copy_format format = __osw_copy_format(state, kind_of_pixels(type));
  copy(state, format, {x, y, width, height}, true, glCopyPixels_op::name,
       [&](const void* pixels) { encoder<glDrawPixels_op>()(width, height, format.format, format.type, pixels); });
}

void glCopyTexImage1D_op::encode(GLenum target, GLint level, GLenum internalformat, GLint x, GLint y, GLsizei width,
                                 GLint border) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  mirror<glCopyTexImage1D_op>(state, target, level, internalformat, x, y, width, border);
  copy_to_texture<glCopyTexImage1D_op>(state, internalformat, {x, y, width, 1},
                                       [=](const copy_format& format, const void* pixels) {
                                         encoder<glTexImage1D_op>()(target, level, static_cast<GLint>(internalformat),
                                                                    width, border, format.format, format.type, pixels);
                                       });
}

void glCopyTexImage2D_op::encode(GLenum target, GLint level, GLenum internalformat, GLint x, GLint y, GLsizei width,
                                 GLsizei height, GLint border) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  mirror<glCopyTexImage2D_op>(state, target, level, internalformat, x, y, width, height, border);
  copy_to_texture<glCopyTexImage2D_op>(
      state, internalformat, {x, y, width, height}, [=](const copy_format& format, const void* pixels) {
        encoder<glTexImage2D_op>()(target, level, static_cast<GLint>(internalformat), width, height, border,
                                   format.format, format.type, pixels);
      });
}

void glCopyTexSubImage1D_op::encode(GLenum target, GLint level, GLint xoffset, GLint x, GLint y, GLsizei width) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  mirror<glCopyTexSubImage1D_op>(state, target, level, xoffset, x, y, width);
  copy_to_texture<glCopyTexSubImage1D_op>(
      state, __osw_tex_internal_format(target), {x, y, width, 1}, [=](const copy_format& format, const void* pixels) {
        encoder<glTexSubImage1D_op>()(target, level, xoffset, width, format.format, format.type, pixels);
      });
}

void glCopyTexSubImage2D_op::encode(GLenum target, GLint level, GLint xoffset, GLint yoffset, GLint x, GLint y,
                                    GLsizei width, GLsizei height) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  mirror<glCopyTexSubImage2D_op>(state, target, level, xoffset, yoffset, x, y, width, height);
  copy_to_texture<glCopyTexSubImage2D_op>(state, __osw_tex_internal_format(target), {x, y, width, height},
                                          [=](const copy_format& format, const void* pixels) {
                                            encoder<glTexSubImage2D_op>()(target, level, xoffset, yoffset, width,
                                                                          height, format.format, format.type, pixels);
                                          });
}

void glCopyTexSubImage3D_op::encode(GLenum target, GLint level, GLint xoffset, GLint yoffset, GLint zoffset, GLint x,
                                    GLint y, GLsizei width, GLsizei height) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  mirror<glCopyTexSubImage3D_op>(state, target, level, xoffset, yoffset, zoffset, x, y, width, height);
  copy_to_texture<glCopyTexSubImage3D_op>(state, __osw_tex_internal_format(target), {x, y, width, height},
                                          [=](const copy_format& format, const void* pixels) {
                                            encoder<glTexSubImage3D_op>()(target, level, xoffset, yoffset, zoffset,
                                                                          width, height, 1, format.format, format.type,
                                                                          pixels);
                                          });
}
