#include "sequential/parts/copy_format.h"

#include <algorithm>
#include <cstdlib>

#include "dispatch/report.h"
#include "wgl/records/pbuffer.h"
#include "wgl/records/window_mapping.h"

namespace {

copy_format color_format(BYTE bits) {
  switch (bits) {
    case 16:
      return {GL_RGB, GL_UNSIGNED_SHORT_5_6_5, 16};
    case 24:
      return {GL_RGB, GL_UNSIGNED_BYTE, 24};
    case 32:
      return {GL_RGBA, GL_UNSIGNED_BYTE, 32};
    default:
      return {};
  }
}

copy_format depth_format(BYTE bits) {
  switch (bits) {
    case 16:
      return {GL_DEPTH_COMPONENT, GL_UNSIGNED_SHORT, 16};
    case 24:
    case 32:
      return {GL_DEPTH_COMPONENT, GL_UNSIGNED_INT, 32};
    default:
      return {};
  }
}

u64 not_negative(i32 value) {
  return value > 0 ? static_cast<u64>(value) : 0;
}

// Bytes from the buffer's start to the end of a single image under a pixel store state.
u64 reach(const __osw_pixel_store& store, u64 pixel, u64 width, u64 height) {
  const u64 alignment = std::max<u64>(not_negative(store.alignment), 1);
  const u64 row_pixels = std::max(not_negative(store.row_length), width);
  const u64 row = (row_pixels * pixel + alignment - 1) / alignment * alignment;
  const u64 rows = std::max(not_negative(store.image_height), height);
  return (not_negative(store.skip_images) + 1) * rows * row + not_negative(store.skip_rows) * row +
         not_negative(store.skip_pixels) * pixel;
}

}  // namespace

PIXELFORMATDESCRIPTOR drawable_format(const __osw_thread_state* state) {
  if (state->window_mapping) return state->window_mapping->pfd;
  PIXELFORMATDESCRIPTOR descriptor{};
  if (const __osw_pbuffer* pbuffer = state->pbuffer) {
    DescribePixelFormat(pbuffer->pbuffer_hdc, pbuffer->pixel_format, sizeof descriptor, &descriptor);
  }
  return descriptor;
}

GLenum __osw_kind_of(GLenum internal_format) {
  switch (internal_format) {
    case GL_STENCIL_INDEX:
      return GL_STENCIL;
    case GL_DEPTH_COMPONENT:
    case GL_DEPTH_COMPONENT16:
    case GL_DEPTH_COMPONENT24:
      return GL_DEPTH;
    default:
      return GL_COLOR;
  }
}

copy_format __osw_copy_format(const __osw_thread_state* state, GLenum kind) {
  if (kind == GL_COLOR) return color_format(drawable_format(state).cColorBits);
  if (kind == GL_DEPTH) return depth_format(drawable_format(state).cDepthBits);
  return {};
}

u64 __osw_copy_buffer_size(const copy_format& format, i32 width, i32 height, const __osw_pixel_store& pack,
                           const __osw_pixel_store& unpack) {
  if (width < 1 || height < 1) return 0;
  const u64 w = static_cast<u64>(width);
  const u64 h = static_cast<u64>(height);
  const u64 bits = static_cast<u64>(format.bits);
  return std::max({w * h * bits / 8, reach(pack, bits / 8, w, h), reach(unpack, bits / 8, w, h)});
}

void* __osw_create_copy_buffer(u64 bytes, const char* function) {
  void* buffer = bytes > largest_block ? nullptr : calloc(std::max<u64>(bytes, 1), 1);
  if (!buffer) __osw_report(severity_error, "no memory for the pixels of %s\n", function);
  return buffer;
}
