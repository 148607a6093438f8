// A rectangle of the window, of which each part has a share, as one image in memory. Issuing thread.
#pragma once

#include "extended/transfers.h"
#include "sequential/parts/copy_format.h"

struct image_form {
  GLenum format;
  GLenum type;
  u32 bytes;  // a pixel
};

// The form in which pixels of the window travel, without loss, by the descriptor of what is bound. `kind`: GL_COLOR,
// GL_DEPTH, GL_STENCIL or GL_DEPTH_STENCIL.
image_form window_form(const __osw_thread_state* state, GLenum kind);

// What pixels of an internal format are: one of those four.
GLenum kind_of_format(GLenum internal_format);

// The size of what is drawn to: 0 where nothing is known of it.
struct drawable_size {
  GLint width;
  GLint height;
};
drawable_size size_of_drawable(const __osw_thread_state* state);

// Reads while plain transfers are in force. Result: the image, which the caller frees; null without memory, after a
// report that names `function`.
template <class Calls>
void* read_window(const __osw_thread_state* state, const image_form& form, const copied_rectangle& from,
                  const char* function) {
  const u64 width = static_cast<u64>(from.width > 0 ? from.width : 0);
  const u64 height = static_cast<u64>(from.height > 0 ? from.height : 0);
  u64 bytes = 0;
  if (__builtin_mul_overflow(width * form.bytes, height, &bytes)) bytes = too_many_bytes;
  void* image = __osw_create_copy_buffer(bytes, function);
  if (image) {
    Calls::template call<glReadPixels_op>(state, from.x, from.y, from.width, from.height, form.format, form.type,
                                          image);
  }
  return image;
}
