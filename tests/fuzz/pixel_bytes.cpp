#include "pixel_bytes.h"

#include <algorithm>

namespace fuzz {

namespace {

constexpr u64 most_bytes = 0x7FFFFFFF;

// Of the packed types a whole pixel.
struct type_size {
  GLenum type;
  u32 bytes;
  bool packed;
};

constexpr type_size type_sizes[] = {{0x1400, 1, false},
                                    {0x1401, 1, false},
                                    {0x1402, 2, false},
                                    {0x1403, 2, false},
                                    {GL_INT, 4, false},
                                    {GL_UNSIGNED_INT, 4, false},
                                    {GL_FLOAT, 4, false},
                                    {GL_HALF_FLOAT, 2, false},
                                    {GL_BITMAP, 1, false},
                                    {GL_UNSIGNED_BYTE_3_3_2, 1, true},
                                    {GL_UNSIGNED_SHORT_4_4_4_4, 2, true},
                                    {GL_UNSIGNED_SHORT_5_5_5_1, 2, true},
                                    {GL_UNSIGNED_INT_8_8_8_8, 4, true},
                                    {GL_UNSIGNED_INT_10_10_10_2, 4, true},
                                    {GL_UNSIGNED_BYTE_2_3_3_REV, 1, true},
                                    {GL_UNSIGNED_SHORT_5_6_5, 2, true},
                                    {GL_UNSIGNED_SHORT_5_6_5_REV, 2, true},
                                    {GL_UNSIGNED_SHORT_4_4_4_4_REV, 2, true},
                                    {GL_UNSIGNED_SHORT_1_5_5_5_REV, 2, true},
                                    {GL_UNSIGNED_INT_8_8_8_8_REV, 4, true},
                                    {GL_UNSIGNED_INT_2_10_10_10_REV, 4, true},
                                    {GL_UNSIGNED_INT_24_8, 4, true},
                                    {GL_UNSIGNED_INT_10F_11F_11F_REV, 4, true},
                                    {GL_UNSIGNED_INT_5_9_9_9_REV, 4, true},
                                    {GL_FLOAT_32_UNSIGNED_INT_24_8_REV, 8, true},
                                    {GL_UNSIGNED_SHORT_8_8_APPLE, 2, true},
                                    {GL_UNSIGNED_SHORT_8_8_REV_APPLE, 2, true}};

u32 components_of(GLenum format) {
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

u64 pixel_bytes(GLenum format, GLenum type) {
  for (const type_size& one : type_sizes) {
    if (one.type == type) return one.packed ? one.bytes : u64{one.bytes} * components_of(format);
  }
  return 0;
}

u64 rounded_up(u64 bytes, u64 step) {
  return (bytes + step - 1) / step * step;
}

u64 whole(i32 value) {
  return static_cast<u64>(value);
}

}  // namespace

image_layout lay_out(const image& of, const pixel_store& store) {
  image_layout layout;
  if (of.width < 0 || of.height < 0 || of.depth < 0) return layout;
  const bool bitmap = of.type == GL_BITMAP;
  layout.pixel = pixel_bytes(of.format, of.type);
  const auto bytes_of = [&](u64 pixels) { return bitmap ? (pixels + 7) / 8 : pixels * layout.pixel; };
  const u64 row_pixels = store.row_length > 0 ? whole(store.row_length) : whole(of.width);
  const u64 rows = store.image_height > 0 ? whole(store.image_height) : whole(of.height);
  const u64 skipped_bits = bitmap ? whole(store.skip_pixels) % 8 : 0;
  layout.row_bytes = bytes_of(skipped_bits + whole(of.width));
  layout.row = rounded_up(bytes_of(row_pixels), whole(store.alignment));
  u64 told = 0;
  const bool told_fits = !__builtin_mul_overflow(layout.row, rows, &layout.slice) &&
                         !__builtin_mul_overflow(layout.slice, whole(of.depth), &told) && told <= most_bytes;
  const bool has_pixels = of.width > 0 && of.height > 0 && of.depth > 0;
  layout.too_large = has_pixels && !told_fits;
  if (!told_fits || told == 0 || of.width == 0 || of.height == 0) return layout;
  layout.first = bytes_of(whole(store.skip_pixels) - skipped_bits) + whole(store.skip_rows) * layout.row;
  if (of.dimensions == 3) layout.first += whole(store.skip_images) * layout.slice;
  layout.end =
      layout.first + (whole(of.depth) - 1) * layout.slice + (whole(of.height) - 1) * layout.row + layout.row_bytes;
  layout.told = told;
  layout.sizable = std::max(layout.end, told) <= most_bytes;
  layout.too_large = !layout.sizable;
  return layout;
}

}  // namespace fuzz
