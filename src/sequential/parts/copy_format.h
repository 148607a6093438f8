// How the pixels of a framebuffer copy travel through memory. Both paths read the source from all parts into one buffer
// and upload the buffer to all parts. On the issuing thread.
#pragma once

#include "dispatch/thread_state.h"
#include "wgl/records/pixel_store.h"

// All zero for stencil and for bit depths that are not known: the transfer goes ahead, and GL refuses it.
struct copy_format {
  GLenum format;
  GLenum type;
  i32 bits;  // per pixel
};

// Where it is copied from, in GL's window coordinates of the application's window.
struct copied_rectangle {
  GLint x;
  GLint y;
  GLsizei width;
  GLsizei height;
};

// The descriptor of the bound window, or of the bound pbuffer's pixel format; else zero.
PIXELFORMATDESCRIPTOR drawable_format(const __osw_thread_state* state);

// What is copied, by an internal format: GL_COLOR, GL_DEPTH or GL_STENCIL. 32-bit depth counts as color.
GLenum __osw_kind_of(GLenum internal_format);

// The format for a kind, by the descriptor of what is bound.
copy_format __osw_copy_format(const __osw_thread_state* state, GLenum kind);

// Bytes of a buffer for `width` by `height` pixels: all that a read under `pack` and an upload under `unpack` reach, of
// which only the alignment counts where the fields have been cleared before. At least width * height * bits / 8, and 0
// when a size is below 1.
u64 __osw_copy_buffer_size(const copy_format& format, i32 width, i32 height, const __osw_pixel_store& pack,
                           const __osw_pixel_store& unpack);

// A zeroed buffer of `bytes`, which the caller frees. Null without memory, and for a size beyond 31 bits, after a
// report that names `function`.
void* __osw_create_copy_buffer(u64 bytes, const char* function);
