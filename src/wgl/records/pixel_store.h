// A mirror of one half of GL's pixel store state, and the GL names that belong to its fields.
#pragma once

#include "ops/types.h"

struct __osw_pixel_store {
  u8 swap_bytes;
  u8 lsb_first;
  i32 row_length;
  i32 skip_rows;
  i32 skip_pixels;
  i32 alignment;
  i32 image_height;
  i32 skip_images;
};

// One field: its two GL names, and where it is kept, as a flag or as a number.
struct pixel_store_field {
  GLenum pack;
  GLenum unpack;
  u8 __osw_pixel_store::*flag;
  i32 __osw_pixel_store::*number;
};

// The order in which the fields are saved, cleared and put back. The alignment, the last, is never saved.
constexpr pixel_store_field pixel_store_fields[] = {
    {GL_PACK_SWAP_BYTES, GL_UNPACK_SWAP_BYTES, &__osw_pixel_store::swap_bytes, nullptr},
    {GL_PACK_LSB_FIRST, GL_UNPACK_LSB_FIRST, &__osw_pixel_store::lsb_first, nullptr},
    {GL_PACK_ROW_LENGTH, GL_UNPACK_ROW_LENGTH, nullptr, &__osw_pixel_store::row_length},
    {GL_PACK_SKIP_ROWS, GL_UNPACK_SKIP_ROWS, nullptr, &__osw_pixel_store::skip_rows},
    {GL_PACK_SKIP_PIXELS, GL_UNPACK_SKIP_PIXELS, nullptr, &__osw_pixel_store::skip_pixels},
    {GL_PACK_IMAGE_HEIGHT, GL_UNPACK_IMAGE_HEIGHT, nullptr, &__osw_pixel_store::image_height},
    {GL_PACK_SKIP_IMAGES, GL_UNPACK_SKIP_IMAGES, nullptr, &__osw_pixel_store::skip_images},
    {GL_PACK_ALIGNMENT, GL_UNPACK_ALIGNMENT, nullptr, &__osw_pixel_store::alignment},
};
constexpr int saved_pixel_store_fields = 7;
constexpr int saved_image_fields = 5;  // those of them that concern a single image

inline i32 get_field(const __osw_pixel_store& store, const pixel_store_field& field) {
  return field.flag ? store.*field.flag : store.*field.number;
}

inline void set_field(__osw_pixel_store* store, const pixel_store_field& field, i32 value) {
  if (field.flag) {
    store->*field.flag = static_cast<u8>(value);
  } else {
    store->*field.number = value;
  }
}

// Records what a call of glPixelStorei sets in the half that `pname` belongs to. A value that GL refuses changes
// nothing. On the thread that has the context current.
void set_pixel_store(__osw_pixel_store* pack, __osw_pixel_store* unpack, GLenum pname, i32 value);

// What GL makes of the value of glPixelStoref, within what an integer can hold.
i32 pixel_store_value(GLfloat value);

// What glPushClientAttrib has put aside of one half, as deep as every driver lets it.
constexpr u32 max_client_attribs = 16;

struct pixel_store_stack {
  u32 depth;
  bool is_saved[max_client_attribs];  // a push may be for other state
  __osw_pixel_store saved[max_client_attribs];
};

// One beyond the depth, and a pop of what was not pushed, change nothing, as in GL. On the same thread.
void push_pixel_store(pixel_store_stack* stack, const __osw_pixel_store& store, GLbitfield mask);
void pop_pixel_store(pixel_store_stack* stack, __osw_pixel_store* store);
