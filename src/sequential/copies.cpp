// Framebuffer copies. A part holds only its share of the source, so the rectangle is read from all parts into memory
// and written to all parts from there.
#include <cstdlib>

#include "sequential/broadcast.h"
#include "sequential/parts/copy_format.h"
#include "wgl/records/glrc.h"

namespace {

// The half of the pixel state that a function works on.
struct pixel_half {
  GLenum pixel_store_field::*name;
  GLenum buffer;
  GLenum buffer_binding;
};

constexpr i32 largest_alignment = 8;

constexpr pixel_half pack = {&pixel_store_field::pack, GL_PIXEL_PACK_BUFFER, GL_PIXEL_PACK_BUFFER_BINDING};
constexpr pixel_half unpack = {&pixel_store_field::unpack, GL_PIXEL_UNPACK_BUFFER, GL_PIXEL_UNPACK_BUFFER_BINDING};

// As `__osw_for_each_part`, but leaves the loop when `work` says that the other parts need nothing.
template <class Work>
void for_parts_while(const __osw_thread_state* state, Work work) {
  for (i32 part = 0; part < __osw_part_count; ++part) {
    __osw_switch_to_part(state, part);
    if (!work()) break;
  }
  __osw_switch_to_app(state);
}

template <class Ask>
void ask_first_part(const __osw_thread_state* state, Ask ask) {
  if (__osw_part_count < 1) return;
  __osw_switch_to_part(state, 0);
  ask();
  __osw_switch_to_app(state);
}

// The query is made and its answer not used.
GLenum __osw_framebuffer_kind(const __osw_thread_state* state, GLenum internal_format) {
  ask_first_part(state, [=] {
    GLint framebuffer = 0;
    sys_gl<glGetIntegerv_op>(state)(GL_FRAMEBUFFER_BINDING, &framebuffer);
  });
  return __osw_kind_of(internal_format);
}

// Of level 0, whatever level is copied to.
GLenum __osw_tex_internal_format(const __osw_thread_state* state, GLenum target) {
  GLint value = 0;
  ask_first_part(state,
                 [&] { sys_gl<glGetTexLevelParameteriv_op>(state)(target, 0, GL_TEXTURE_INTERNAL_FORMAT, &value); });
  return static_cast<GLenum>(value);
}

// Result: the binding that was there.
GLuint unbind_buffer(const __osw_thread_state* state, const pixel_half& half) {
  GLint bound = 0;
  for_parts_while(state, [&] {
    sys_gl<glGetIntegerv_op>(state)(half.buffer_binding, &bound);
    if (bound) sys_gl<glBindBuffer_op>(state)(half.buffer, 0);
    return bound != 0;
  });
  return static_cast<GLuint>(bound);
}

// There is only the pack target to come back to: a saved unpack binding stands there afterwards, and the unpack target
// stays unbound.
void __osw_rebind_pixel_buffer(const __osw_thread_state* state, GLuint buffer) {
  if (!buffer) return;
  __osw_for_each_part(state, [=](i32) { sys_gl<glBindBuffer_op>(state)(GL_PIXEL_PACK_BUFFER, buffer); });
}

i32 get_store_value(const __osw_thread_state* state, const pixel_store_field& field, GLenum name) {
  if (field.flag) {
    GLboolean value = 0;
    sys_gl<glGetBooleanv_op>(state)(name, &value);
    return value;
  }
  GLint value = 0;
  sys_gl<glGetIntegerv_op>(state)(name, &value);
  return value;
}

bool is_all_zero(const __osw_pixel_store& store) {
  for (int i = 0; i < saved_pixel_store_fields; ++i) {
    if (get_field(store, pixel_store_fields[i])) return false;
  }
  return true;
}

void get_store(const __osw_thread_state* state, const pixel_half& half, __osw_pixel_store* store) {
  for (int i = 0; i < saved_pixel_store_fields; ++i) {
    const pixel_store_field& field = pixel_store_fields[i];
    set_field(store, field, get_store_value(state, field, field.*half.name));
  }
}

// Sets the fields that are not 0 in `saved` to 0, or to what they were.
void set_store(const __osw_thread_state* state, const pixel_half& half, const __osw_pixel_store& saved, bool clear) {
  for (int i = 0; i < saved_pixel_store_fields; ++i) {
    const pixel_store_field& field = pixel_store_fields[i];
    const i32 value = get_field(saved, field);
    if (value) sys_gl<glPixelStorei_op>(state)(field.*half.name, clear ? 0 : value);
  }
}

void save_store(const __osw_thread_state* state, const pixel_half& half, __osw_pixel_store* saved) {
  for_parts_while(state, [=, &half] {
    get_store(state, half, saved);
    set_store(state, half, *saved, true);
    return !is_all_zero(*saved);
  });
}

void restore_store(const __osw_thread_state* state, const pixel_half& half, const __osw_pixel_store& saved) {
  if (is_all_zero(saved)) return;
  __osw_for_each_part(state, [&](i32) { set_store(state, half, saved, false); });
}

// Bytes that the read and the upload will reach, whatever alignment they work under.
u64 bytes_reached(const __osw_thread_state* state, const copy_format& format, const copied_rectangle& from,
                  bool clears_unpack) {
  __osw_pixel_store read{};
  __osw_pixel_store upload = clears_unpack ? __osw_pixel_store{} : state->glrc->unpack_store;
  read.alignment = upload.alignment = largest_alignment;
  return __osw_copy_buffer_size(format, from.width, from.height, read, upload);
}

// The sequence of all six copies. `upload` writes the pixels to all parts. Only a copy of pixels clears the unpack
// state; the others upload under the application's.
template <class Upload>
void copy(const __osw_thread_state* state, const copy_format& format, const copied_rectangle& from, bool clears_unpack,
          const char* function, Upload upload) {
  void* buffer = __osw_create_copy_buffer(bytes_reached(state, format, from, clears_unpack), function);
  if (!buffer) return;
  const GLuint pack_buffer = unbind_buffer(state, pack);
  const GLuint unpack_buffer = unbind_buffer(state, unpack);
  __osw_pixel_store saved_pack{};
  __osw_pixel_store saved_unpack{};
  save_store(state, pack, &saved_pack);
  broadcaster<glReadPixels_op>()(from.x, from.y, from.width, from.height, format.format, format.type, buffer);
  if (clears_unpack) save_store(state, unpack, &saved_unpack);
  upload(static_cast<const void*>(buffer));
  free(buffer);
  __osw_rebind_pixel_buffer(state, pack_buffer);
  __osw_rebind_pixel_buffer(state, unpack_buffer);
  restore_store(state, pack, saved_pack);
  restore_store(state, unpack, saved_unpack);
  __osw_switch_to_app(state);
}

template <class Op, class Upload>
void copy_to_texture(const __osw_thread_state* state, GLenum internal_format, const copied_rectangle& from,
                     Upload upload) {
  const copy_format format = __osw_copy_format(state, __osw_framebuffer_kind(state, internal_format));
  copy(state, format, from, false, Op::name, [&](const void* pixels) { upload(format, pixels); });
}

GLenum internal_format_of_pixels(GLenum type) {
  switch (type) {
    case GL_COLOR:
      return GL_RGBA;
    case GL_DEPTH:
      return GL_DEPTH_COMPONENT;
    default:
      return GL_STENCIL_INDEX;
  }
}

}  // namespace

void glCopyPixels_op::broadcast(GLint x, GLint y, GLsizei width, GLsizei height, GLenum type) {
  const __osw_thread_state* state = __osw_fetch_thread_state();
  const GLenum kind = __osw_framebuffer_kind(state, internal_format_of_pixels(type));
  const copy_format format = __osw_copy_format(state, kind);
  copy(state, format, {x, y, width, height}, true, glCopyPixels_op::name,
       [&](const void* pixels) { broadcaster<glDrawPixels_op>()(width, height, format.format, format.type, pixels); });
}

void glCopyTexImage1D_op::broadcast(GLenum target, GLint level, GLenum internalformat, GLint x, GLint y, GLsizei width,
                                    GLint border) {
  copy_to_texture<glCopyTexImage1D_op>(
      __osw_fetch_thread_state(), internalformat, {x, y, width, 1}, [=](const copy_format& format, const void* pixels) {
        broadcaster<glTexImage1D_op>()(target, level, static_cast<GLint>(internalformat), width, border, format.format,
                                       format.type, pixels);
      });
}

void glCopyTexImage2D_op::broadcast(GLenum target, GLint level, GLenum internalformat, GLint x, GLint y, GLsizei width,
                                    GLsizei height, GLint border) {
  copy_to_texture<glCopyTexImage2D_op>(__osw_fetch_thread_state(), internalformat, {x, y, width, height},
                                       [=](const copy_format& format, const void* pixels) {
                                         broadcaster<glTexImage2D_op>()(
                                             target, level, static_cast<GLint>(internalformat), width, height, border,
                                             format.format, format.type, pixels);
                                       });
}

void glCopyTexSubImage1D_op::broadcast(GLenum target, GLint level, GLint xoffset, GLint x, GLint y, GLsizei width) {
  const __osw_thread_state* state = __osw_fetch_thread_state();
  copy_to_texture<glCopyTexSubImage1D_op>(state, __osw_tex_internal_format(state, target), {x, y, width, 1},
                                          [=](const copy_format& format, const void* pixels) {
                                            broadcaster<glTexSubImage1D_op>()(target, level, xoffset, width,
                                                                              format.format, format.type, pixels);
                                          });
}

void glCopyTexSubImage2D_op::broadcast(GLenum target, GLint level, GLint xoffset, GLint yoffset, GLint x, GLint y,
                                       GLsizei width, GLsizei height) {
  const __osw_thread_state* state = __osw_fetch_thread_state();
  copy_to_texture<glCopyTexSubImage2D_op>(state, __osw_tex_internal_format(state, target), {x, y, width, height},
                                          [=](const copy_format& format, const void* pixels) {
                                            broadcaster<glTexSubImage2D_op>()(target, level, xoffset, yoffset, width,
                                                                              height, format.format, format.type,
                                                                              pixels);
                                          });
}

void glCopyTexSubImage3D_op::broadcast(GLenum target, GLint level, GLint xoffset, GLint yoffset, GLint zoffset, GLint x,
                                       GLint y, GLsizei width, GLsizei height) {
  const __osw_thread_state* state = __osw_fetch_thread_state();
  copy_to_texture<glCopyTexSubImage3D_op>(state, __osw_tex_internal_format(state, target), {x, y, width, height},
                                          [=](const copy_format& format, const void* pixels) {
                                            broadcaster<glTexSubImage3D_op>()(target, level, xoffset, yoffset, zoffset,
                                                                              width, height, 1, format.format,
                                                                              format.type, pixels);
                                          });
}
