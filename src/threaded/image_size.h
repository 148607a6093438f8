// How many bytes an image in application memory takes, by the mirror of the unpack state.
#pragma once

#include "pipeline/cmd.h"
#include "wgl/records/glrc.h"

// Components of a pixel: 1 for a packed type.
u32 __osw_pixel_components(GLenum format, GLenum type);

// Bytes of a component, or of a pixel of a packed type; 0 for a type that is not known.
u32 __osw_pixel_type_size(GLenum type);

// Bytes of one pixel, as the calls take it that fill with it; 0 for a type that is not known.
u64 texel_size(GLenum format, GLenum type);

// Bytes of an image of width by height by depth pixels, without what the skips leave out before it. 0 when a size is
// negative or the product does not fit 32 bits.
i32 __osw_image_size(const __osw_thread_state* state, i32 width, i32 height, i32 depth, GLenum format, GLenum type);

// Bytes from the application's pointer on.
struct image_extent {
  u64 told;     // what GL reads of the size above, which is copied whatever lies there
  u64 reached;  // that size, or as far as the workers go under the same unpack state, if that is more; or
                // `too_many_bytes`
};

// Bytes from a pointer on that a transfer under the state of one half of the pixel store reaches, skips included; 0 for
// an image without pixels or of a type that is not known, or `too_many_bytes`.
u64 image_reach(const __osw_pixel_store& store, const image_payload& image);

// The skipped bytes before the image are reached too, skipped images only in an image of three dimensions. Nothing is
// told or reached of an image without pixels.
image_extent __osw_image_extent(const __osw_thread_state* state, const image_payload& image);
