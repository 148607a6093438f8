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

constexpr type_size type_sizes[] = {{0x1400, 1, false}, {0x1401, 1, false}, {0x1402, 2, false}, {0x1403, 2, false},
                                    {0x1404, 4, false}, {0x1405, 4, false}, {0x1406, 4, false}, {0x140B, 2, false},
                                    {0x1A00, 1, false}, {0x8032, 1, true},  {0x8033, 2, true},  {0x8034, 2, true},
                                    {0x8035, 4, true},  {0x8036, 4, true},  {0x8362, 1, true},  {0x8363, 2, true},
                                    {0x8364, 2, true},  {0x8365, 2, true},  {0x8366, 2, true},  {0x8367, 4, true},
                                    {0x8368, 4, true},  {0x84FA, 4, true},  {0x8C3B, 4, true},  {0x8C3E, 4, true}};

u32 components_of(GLenum format) {
  switch (format) {
    case 0x1907:
    case 0x80E0:
    case 0x8D98:
    case 0x8D9A:
      return 3;
    case 0x1908:
    case 0x80E1:
    case 0x8000:
    case 0x8D99:
    case 0x8D9B:
      return 4;
    case 0x190A:
    case 0x8227:
    case 0x8228:
    case 0x8D9D:
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
  if (!told_fits || told == 0 || of.width == 0 || of.height == 0) return layout;
  layout.first = bytes_of(whole(store.skip_pixels) - skipped_bits) + whole(store.skip_rows) * layout.row;
  if (of.dimensions == 3) layout.first += whole(store.skip_images) * layout.slice;
  layout.end =
      layout.first + (whole(of.depth) - 1) * layout.slice + (whole(of.height) - 1) * layout.row + layout.row_bytes;
  layout.told = told;
  layout.sizable = std::max(layout.end, told) <= most_bytes;
  return layout;
}

}  // namespace fuzz
