// How many bytes an image in application memory takes, by the mirror of the unpack state.
#pragma once

#include "pipeline/cmd.h"
#include "wgl/records/glrc.h"

// Components of a pixel: 1 for a packed type.
u32 __osw_pixel_components(GLenum format, GLenum type);

// Bytes of a component, or of a pixel of a packed type; 0 for a type that is not known.
u32 __osw_pixel_type_size(GLenum type);

// Bytes of an image of width by height by depth pixels, without what the skips leave out before it. 0 when a size is
// negative or the product does not fit 32 bits.
i32 __osw_image_size(const __osw_thread_state* state, i32 width, i32 height, i32 depth, GLenum format, GLenum type);

// Bytes from the application's pointer on that are copied: the size above, or as far as the workers reach under the
// same unpack state, the skipped bytes before the image included, whichever is more. `dimensions` is that of the call:
// a skip of images means nothing below 3. 0 for an image without pixels, and when they reach beyond 31 bits.
u64 __osw_image_extent(const __osw_thread_state* state, const i32 (&size)[3], int dimensions, GLenum format,
                       GLenum type);

// Where an image call has its sizes: `dimensions` of them from slot `first` on. Format and type stand before the
// pixels.
template <class Op>
struct image_slots;
template <>
struct image_slots<glTexImage1D_op> {
  static constexpr int first = 3, dimensions = 1, count = 8;
};
template <>
struct image_slots<glTexImage2D_op> {
  static constexpr int first = 3, dimensions = 2, count = 9;
};
template <>
struct image_slots<glTexImage3D_op> {
  static constexpr int first = 3, dimensions = 3, count = 10;
};
template <>
struct image_slots<glTexSubImage1D_op> {
  static constexpr int first = 3, dimensions = 1, count = 7;
};
template <>
struct image_slots<glTexSubImage2D_op> {
  static constexpr int first = 4, dimensions = 2, count = 9;
};
template <>
struct image_slots<glTexSubImage3D_op> {
  static constexpr int first = 5, dimensions = 3, count = 11;
};

template <class Op>
inline u64 __osw_image_bytes(const __osw_thread_state* state, const u64 (&slots)[image_slots<Op>::count]) {
  using where = image_slots<Op>;
  i32 size[3] = {1, 1, 1};
  for (int i = 0; i < where::dimensions; ++i) size[i] = from_slot<i32>(slots[where::first + i]);
  const auto format = from_slot<GLenum>(slots[where::count - 3]);
  const auto type = from_slot<GLenum>(slots[where::count - 2]);
  return __osw_image_extent(state, size, where::dimensions, format, type);
}
