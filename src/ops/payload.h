// What the pointers of a call name, in the words of gl_ops.inc's column `payload`: each is a function of what the row
// says, and the type of its result is the form in which an encoder copies.
#pragma once

#include "ops/parameter_counts.h"

// Each pointer names so many elements, which are few.
struct record_payload {
  u32 elements;
};

// The last pointer names so many items of so many elements each.
struct array_payload {
  i32 items;
  u64 elements;
};

// The last pointer names so many items of so many elements each, or nothing when it is null.
struct items_payload {
  i32 items;
  u64 elements;
};

// The last pointer names a string.
struct text_payload {
  const char* text;
};

// The last pointer names so many bytes. Below 0: the call is one that GL refuses.
struct block_payload {
  int64_t bytes;
};

// The last pointer names one pixel, or nothing when it is null.
struct texel_payload {
  GLenum format;
  GLenum type;
};

// Each pointer names so many bytes, in the order of the parameters, or nothing when it is null.
template <size_t count>
struct arrays_payload {
  u64 bytes[count];
};

// The last pointer names room for so many names, which the call makes.
struct names_payload {
  i32 items;
};

// The last pointer names an image of so many sizes; those beyond are 1.
struct image_payload {
  i32 size[3];
  int dimensions;
  GLenum format;
  GLenum type;
};

constexpr record_payload payload_in_record(u32 elements) {
  return {elements};
}

constexpr array_payload payload_fits(i32 items, u64 elements = 1) {
  return {items, elements};
}

constexpr items_payload payload_items(i32 items, u64 elements = 1) {
  return {items, elements};
}

constexpr text_payload payload_text(const char* text) {
  return {text};
}

constexpr texel_payload payload_texel(GLenum format, GLenum type) {
  return {format, type};
}

template <class... Bytes>
constexpr arrays_payload<sizeof...(Bytes)> payload_arrays(Bytes... bytes) {
  return {{bytes...}};
}

constexpr names_payload payload_made(i32 items) {
  return {items};
}

constexpr block_payload payload_block(int64_t bytes) {
  return {bytes};
}

constexpr image_payload payload_pixels(i32 width, GLenum format, GLenum type) {
  return {{width, 1, 1}, 1, format, type};
}
constexpr image_payload payload_pixels(i32 width, i32 height, GLenum format, GLenum type) {
  return {{width, height, 1}, 2, format, type};
}
constexpr image_payload payload_pixels(i32 width, i32 height, i32 depth, GLenum format, GLenum type) {
  return {{width, height, depth}, 3, format, type};
}

// The most bytes that a block is made of: what a GLsizei can count.
constexpr u64 largest_block = 0x7FFFFFFF;

// More bytes than there is memory: no block is made of them, and the call reaches no part.
constexpr u64 too_many_bytes = 0x7FFFFFFFFFFFFFFF;

// The bytes of `count` items of `item_size` bytes, or `too_many_bytes`. 0 for a negative count: then nothing is copied
// and GL itself refuses the call on the workers.
constexpr u64 __osw_checked_bytes(i32 count, u64 item_size) {
  if (count < 0) return 0;
  const u64 bytes = static_cast<u64>(count) * item_size;
  return bytes > largest_block ? too_many_bytes : bytes;
}

// The same for counts of any kind.
constexpr u64 bytes_of_array(int64_t count, u64 item_size) {
  return count > static_cast<int64_t>(largest_block)
             ? too_many_bytes
             : __osw_checked_bytes(count < 0 ? 0 : static_cast<i32>(count), item_size);
}

// With its end.
constexpr u64 bytes_of_text(const char* text) {
  return text ? __builtin_strlen(text) + 1 : 0;
}

// Bytes of `count` list names of `type`, or `too_many_bytes`; 0 for a count below 1 and for a type that is none.
constexpr u64 __osw_call_lists_size(GLsizei count, GLenum type) {
  if (count < 1) return 0;
  u64 item = 0;
  switch (type) {
    case GL_BYTE:
    case GL_UNSIGNED_BYTE:
      item = 1;
      break;
    case GL_SHORT:
    case GL_UNSIGNED_SHORT:
    case GL_2_BYTES:
      item = 2;
      break;
    case GL_3_BYTES:
      item = 3;
      break;
    case GL_INT:
    case GL_UNSIGNED_INT:
    case GL_FLOAT:
    case GL_4_BYTES:
      item = 4;
      break;
    default:
      break;
  }
  return __osw_checked_bytes(count, item);
}
