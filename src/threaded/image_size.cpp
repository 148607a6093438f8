#include "threaded/image_size.h"

#include <algorithm>

namespace {

bool is_packed(GLenum type) {
  switch (type) {
    case GL_UNSIGNED_INT_24_8:
    case GL_UNSIGNED_INT_10F_11F_11F_REV:
    case GL_UNSIGNED_INT_5_9_9_9_REV:
    case GL_FLOAT_32_UNSIGNED_INT_24_8_REV:
      return true;
    default:
      return (type >= GL_UNSIGNED_BYTE_3_3_2 && type <= GL_UNSIGNED_INT_10_10_10_2) ||
             (type >= GL_UNSIGNED_BYTE_2_3_3_REV && type <= GL_UNSIGNED_INT_2_10_10_10_REV);
  }
}

u64 bytes_of_pixels(u64 pixels, GLenum format, GLenum type) {
  if (type == GL_BITMAP) return (pixels + 7) / 8;
  return pixels * texel_size(format, type);
}

// A row and a slice of the source, in bytes.
struct image_pitch {
  u64 row;
  u64 rows;
};

image_pitch pitch_of(const __osw_pixel_store& store, i32 width, i32 height, GLenum format, GLenum type) {
  const u64 w = static_cast<u64>(store.row_length > 0 ? store.row_length : width);
  const u64 h = static_cast<u64>(store.image_height > 0 ? store.image_height : height);
  u64 row = bytes_of_pixels(w, format, type);
  const u64 alignment = store.alignment > 0 ? static_cast<u64>(store.alignment) : 1;
  if (const u64 rest = row % alignment) row += alignment - rest;
  return {row, h};
}

u64 bytes_of_image(const image_pitch& pitch, i32 depth) {
  u64 bytes;
  if (__builtin_mul_overflow(pitch.row, pitch.rows, &bytes)) return too_many_bytes;
  if (__builtin_mul_overflow(bytes, static_cast<u64>(depth), &bytes)) return too_many_bytes;
  return bytes;
}

}  // namespace

u32 __osw_pixel_components(GLenum format, GLenum type) {
  if (is_packed(type)) return 1;
  switch (format) {
    case GL_RGB:
    case GL_BGR:
    case GL_RGB_INTEGER:
    case GL_BGR_INTEGER:
      return 3;
    case GL_RGBA:
    case GL_BGRA:
    case GL_ABGR_EXT:
    case GL_RGBA_INTEGER:
    case GL_BGRA_INTEGER:
      return 4;
    case GL_LUMINANCE_ALPHA:
    case GL_RG:
    case GL_RG_INTEGER:
    case GL_LUMINANCE_ALPHA_INTEGER_EXT:
      return 2;
    default:
      return 1;
  }
}

u32 __osw_pixel_type_size(GLenum type) {
  switch (type) {
    case GL_BYTE:
    case GL_UNSIGNED_BYTE:
    case GL_BITMAP:
    case GL_UNSIGNED_BYTE_3_3_2:
    case GL_UNSIGNED_BYTE_2_3_3_REV:
      return 1;
    case GL_SHORT:
    case GL_UNSIGNED_SHORT:
    case GL_HALF_FLOAT:
    case GL_UNSIGNED_SHORT_4_4_4_4:
    case GL_UNSIGNED_SHORT_5_5_5_1:
    case GL_UNSIGNED_SHORT_5_6_5:
    case GL_UNSIGNED_SHORT_5_6_5_REV:
    case GL_UNSIGNED_SHORT_4_4_4_4_REV:
    case GL_UNSIGNED_SHORT_1_5_5_5_REV:
      return 2;
    case GL_INT:
    case GL_UNSIGNED_INT:
    case GL_FLOAT:
    case GL_UNSIGNED_INT_8_8_8_8:
    case GL_UNSIGNED_INT_10_10_10_2:
    case GL_UNSIGNED_INT_8_8_8_8_REV:
    case GL_UNSIGNED_INT_2_10_10_10_REV:
    case GL_UNSIGNED_INT_24_8:
    case GL_UNSIGNED_INT_10F_11F_11F_REV:
    case GL_UNSIGNED_INT_5_9_9_9_REV:
      return 4;
    default:
      return 0;
  }
}

u64 texel_size(GLenum format, GLenum type) {
  switch (type) {
    case GL_FLOAT_32_UNSIGNED_INT_24_8_REV:
      return 8;
    case GL_UNSIGNED_SHORT_8_8_APPLE:
    case GL_UNSIGNED_SHORT_8_8_REV_APPLE:
      return 2;
    default:
      return u64{__osw_pixel_components(format, type)} * __osw_pixel_type_size(type);
  }
}

i32 __osw_image_size(const __osw_thread_state* state, i32 width, i32 height, i32 depth, GLenum format, GLenum type) {
  if (width < 0 || height < 0 || depth < 0 || !__osw_pixel_type_size(type)) return 0;
  const u64 bytes = bytes_of_image(pitch_of(state->glrc->unpack_store, width, height, format, type), depth);
  return bytes > largest_block ? 0 : static_cast<i32>(bytes);
}

u64 image_reach(const __osw_pixel_store& store, const image_payload& image) {
  const auto& [size, dimensions, format, type] = image;
  if (size[0] < 1 || size[1] < 1 || size[2] < 1) return 0;
  const image_pitch pitch = pitch_of(store, size[0], size[1], format, type);
  const u64 whole = bytes_of_image(pitch, size[2]);
  if (!whole || whole > largest_block) return whole ? too_many_bytes : 0;
  const u64 slice = pitch.row * pitch.rows;
  u64 end = static_cast<u64>(size[2] - 1) * slice +
            (static_cast<u64>(size[1] - 1) + static_cast<u64>(store.skip_rows)) * pitch.row;
  end += bytes_of_pixels(static_cast<u64>(store.skip_pixels) + static_cast<u64>(size[0]), format, type);
  if (dimensions == 3) end += static_cast<u64>(store.skip_images) * slice;
  return end > largest_block ? too_many_bytes : end;
}

image_extent __osw_image_extent(const __osw_thread_state* state, const image_payload& image) {
  const u64 reach = image_reach(state->glrc->unpack_store, image);
  if (!reach || reach == too_many_bytes) return {0, reach};
  const u64 told =
      static_cast<u64>(__osw_image_size(state, image.size[0], image.size[1], image.size[2], image.format, image.type));
  // The last row of a wider image ends with its last pixel: what the size counts behind it may be anybody's.
  return {std::min(told, reach), std::max(told, reach)};
}
