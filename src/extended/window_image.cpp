#include "extended/window_image.h"

#include "wgl/records/pbuffer.h"
#include "wgl/records/window_mapping.h"

image_form window_form(const __osw_thread_state* state, GLenum kind) {
  const PIXELFORMATDESCRIPTOR drawable = drawable_format(state);
  switch (kind) {
    case GL_DEPTH:
      return {GL_DEPTH_COMPONENT, GL_UNSIGNED_INT, 4};
    case GL_STENCIL:
      return {GL_STENCIL_INDEX, GL_UNSIGNED_BYTE, 1};
    case GL_DEPTH_STENCIL:
      return {GL_DEPTH_STENCIL, GL_UNSIGNED_INT_24_8, 4};
    default:
      break;
  }
  if (drawable.cColorBits > 48) return {GL_RGBA, GL_FLOAT, 16};
  if (drawable.cRedBits > 8) return {GL_RGBA, GL_UNSIGNED_SHORT, 8};
  return {GL_RGBA, GL_UNSIGNED_BYTE, 4};
}

GLenum kind_of_format(GLenum internal_format) {
  switch (internal_format) {
    case GL_DEPTH_COMPONENT:
    case GL_DEPTH_COMPONENT16:
    case GL_DEPTH_COMPONENT24:
    case GL_DEPTH_COMPONENT32:
    case GL_DEPTH_COMPONENT32F:
      return GL_DEPTH;
    case GL_DEPTH_STENCIL:
    case GL_DEPTH24_STENCIL8:
    case GL_DEPTH32F_STENCIL8:
      return GL_DEPTH_STENCIL;
    case GL_STENCIL_INDEX:
    case GL_STENCIL_INDEX8:
      return GL_STENCIL;
    default:
      return GL_COLOR;
  }
}

drawable_size size_of_drawable(const __osw_thread_state* state) {
  if (const __osw_window_mapping* mapping = state->window_mapping) {
    const RECT client = __osw_load_rect(mapping->client_rect);
    return {client.right - client.left, client.bottom - client.top};
  }
  if (const __osw_pbuffer* pbuffer = state->pbuffer) return {pbuffer->width, pbuffer->height};
  return {};
}
