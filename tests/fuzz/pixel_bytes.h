// Where in memory the pixels of an image lie under a pixel store state, as GL addresses them.
#pragma once

#include "ops/types.h"

namespace fuzz {

struct pixel_store {
  i32 swap_bytes = 0;
  i32 lsb_first = 0;
  i32 row_length = 0;
  i32 skip_rows = 0;
  i32 skip_pixels = 0;
  i32 alignment = 4;
  i32 image_height = 0;
  i32 skip_images = 0;
};

struct image {
  i32 width = 1;
  i32 height = 1;
  i32 depth = 1;
  int dimensions = 2;
  GLenum format = 0;
  GLenum type = 0;
};

// Byte distances from the image's address on. A bitmap's pixel counts 0 bytes.
struct image_layout {
  u64 pixel = 0;
  u64 row_bytes = 0;       // that belong to the image itself
  u64 row = 0;             // from one row to the next
  u64 slice = 0;           // from one image of a volume to the next
  u64 first = 0;           // of the first pixel
  u64 end = 0;             // behind the last pixel
  u64 told = 0;            // of whole rows and images, without what is skipped: what a copy takes at least
  bool sizable = false;    // false: a size is below 1, a pixel has no size, or no memory holds it; nothing is read
  bool too_large = false;  // no memory holds it
};

image_layout lay_out(const image& of, const pixel_store& store);

// Whether rows lie over each other. Who writes such an image by several hands leaves bytes that depend on their order.
constexpr bool rows_overlap(const image_layout& layout) {
  return layout.row < layout.row_bytes;
}

}  // namespace fuzz
