// Draws from client arrays on the threaded path: pointer calls that aim the parts at a copy, the draw, and the
// application's own pointers again. glArrayElement: the immediate mode calls that it stands for.
#include <map>
#include <string>

#include "expectation.h"

namespace fuzz {

namespace {

// What a draw takes along.
struct capture {
  u32 arrays = 0;  // bit i: array i
};

constexpr u64 most_bytes = 0x7FFFFFFF;

// More than a block can hold stays where it is, and the application waits.
bool fits_a_block(const gl_context& record, u32 arrays, u64 end) {
  for (u32 i = 0; i < array_count; ++i) {
    if (!(arrays & 1u << i)) continue;
    if ((bytes_apart(record.arrays[i]) * end + 7) / 8 * 8 > most_bytes) return false;
  }
  return true;
}

capture plan(const gl_context& record, bool indices_in_buffer, u64 first, u64 end) {
  if (!record.enabled) return {};
  u32 buffered = 0;
  for (u32 i = 0; i < array_count; ++i) buffered |= record.arrays[i].buffered ? 1u << i : 0;
  const u32 arrays = record.enabled & ~buffered;
  if (indices_in_buffer || end <= first || !fits_a_block(record, arrays, end)) return {};
  return {arrays};
}

void point(expectation* all, const client_array& array, u32 number, pointers become) {
  const u64 size = driver::bits_of(array.size);
  const u64 stride = driver::bits_of(array.stride);
  if (number >= first_attribute) {
    return expect_parts(all, glVertexAttribPointer_op::op,
                        args({number - first_attribute, size, array.type, array.normalized, stride, array.pointer}),
                        become);
  }
  switch (array.name) {
    case GL_VERTEX_ARRAY:
      return expect_parts(all, glVertexPointer_op::op, args({size, array.type, stride, array.pointer}), become);
    case GL_COLOR_ARRAY:
      return expect_parts(all, glColorPointer_op::op, args({size, array.type, stride, array.pointer}), become);
    case GL_SECONDARY_COLOR_ARRAY:
      return expect_parts(all, glSecondaryColorPointer_op::op, args({size, array.type, stride, array.pointer}), become);
    case GL_TEXTURE_COORD_ARRAY:
      return expect_parts(all, glTexCoordPointer_op::op, args({size, array.type, stride, array.pointer}), become);
    case GL_NORMAL_ARRAY:
      return expect_parts(all, glNormalPointer_op::op, args({array.type, stride, array.pointer}), become);
    case GL_INDEX_ARRAY:
      return expect_parts(all, glIndexPointer_op::op, args({array.type, stride, array.pointer}), become);
    case GL_FOG_COORD_ARRAY:
      return expect_parts(all, glFogCoordPointer_op::op, args({array.type, stride, array.pointer}), become);
    case GL_EDGE_FLAG_ARRAY:
      return expect_parts(all, glEdgeFlagPointer_op::op, args({stride, array.pointer}), become);
    default:
      return;
  }
}

// Texture coordinates are set under their own unit. A bound array buffer would take the pointers for offsets.
void point_all(expectation* all, u32 arrays, pointers become) {
  const gl_context& record = all->record;
  const bool unbinds = arrays && record.array_buffer;
  if (unbinds) expect_parts(all, glBindBuffer_op::op, args({GL_ARRAY_BUFFER, 0}));
  for (u32 i = 0; i < array_count; ++i) {
    const client_array& array = record.arrays[i];
    if (!(arrays & 1u << i) || !array.is_set) continue;
    const bool other_unit =
        i < first_attribute && array.name == GL_TEXTURE_COORD_ARRAY && i - 3 != record.client_texture;
    if (other_unit) expect_parts(all, glClientActiveTexture_op::op, args({GL_TEXTURE0 + i - 3}));
    point(all, array, i, become);
    if (other_unit) expect_parts(all, glClientActiveTexture_op::op, args({GL_TEXTURE0 + record.client_texture}));
  }
  if (unbinds) expect_parts(all, glBindBuffer_op::op, args({GL_ARRAY_BUFFER, record.array_buffer}));
}

struct range {
  u64 first = 0;
  u64 end = 0;
};

range range_of_elements(i32 count, GLenum type, u64 indices) {
  const u32 bytes = type == GL_UNSIGNED_BYTE ? 1 : type == GL_UNSIGNED_SHORT ? 2 : type == GL_UNSIGNED_INT ? 4 : 0;
  if (bytes == 0 || count < 1 || indices == 0) return {};
  range found{~u64{0}, 0};
  for (i32 i = 0; i < count; ++i) {
    u32 index = 0;
    __builtin_memcpy(&index, reinterpret_cast<const void*>(indices + bytes * static_cast<u32>(i)), bytes);
    found = {index < found.first ? index : found.first, index >= found.end ? u64{index} + 1 : found.end};
  }
  return found;
}

// ---- glArrayElement ----

const char* suffix_of(GLenum type) {
  switch (type) {
    case GL_BYTE:
      return "b";
    case GL_UNSIGNED_BYTE:
      return "ub";
    case GL_SHORT:
      return "s";
    case GL_UNSIGNED_SHORT:
      return "us";
    case GL_INT:
      return "i";
    case GL_UNSIGNED_INT:
      return "ui";
    case GL_FLOAT:
      return "f";
    case GL_DOUBLE:
      return "d";
    default:
      return nullptr;
  }
}

// The number of the function of this name, or -1.
int number_of(const std::string& name) {
  static const std::map<std::string, int> numbers = [] {
    std::map<std::string, int> all;
    for (const ops::row& row : ops::all()) all[row.name] = row.op;
    return all;
  }();
  const auto found = numbers.find(name);
  return found == numbers.end() ? -1 : found->second;
}

// The call that sends one element: the function of the array's name, size and type, if there is one. Sizes and types
// that no function takes send nothing.
int immediate_call(const client_array& array, u32 number, bool has_attribute_0) {
  const char* suffix = suffix_of(array.type);
  const std::string size = std::to_string(array.size);
  if (number >= first_attribute) {
    if (!suffix || (array.normalized && array.size != 4)) return -1;
    return number_of("glVertexAttrib" + size + (array.normalized ? "N" : "") + suffix + "v");
  }
  if (array.name == GL_EDGE_FLAG_ARRAY) return glEdgeFlagv_op::op;
  if (!suffix) return -1;
  const std::string end = std::string(suffix) + "v";
  switch (array.name) {
    case GL_VERTEX_ARRAY:  // with attribute 0 enabled the vertices go out as normals
      return number_of(has_attribute_0 ? "glNormal3" + end : "glVertex" + size + end);
    case GL_COLOR_ARRAY:
      return number_of("glColor" + size + end);
    case GL_NORMAL_ARRAY:
      return number_of("glNormal3" + end);
    case GL_TEXTURE_COORD_ARRAY:
      return number_of("glMultiTexCoord" + size + end);
    case GL_FOG_COORD_ARRAY:
      return number_of("glFogCoord" + end);
    case GL_SECONDARY_COLOR_ARRAY:
      return number_of("glSecondaryColor3" + end);
    case GL_INDEX_ARRAY:
      return number_of("glIndex" + end);
    default:
      return -1;
  }
}

void expect_element(expectation* all, u32 number, i32 element) {
  const client_array& array = all->record.arrays[number];
  const bool has_attribute_0 = all->record.enabled & 1u << first_attribute;
  const int op = array.is_set ? immediate_call(array, number, has_attribute_0) : -1;
  if (op < 0) return;
  const u64 address = array.pointer + static_cast<u64>(element) * bytes_apart(array);
  driver::argument_bits arguments = args({address});
  if (ops::of(op).count == 2) {
    arguments = args({number >= first_attribute ? number - first_attribute : GL_TEXTURE0 + number - 3, address});
  }
  expect_mirror(all, op, arguments);
  expect_parts(all, op, arguments, pointers::copied);
}

}  // namespace

void expect_draw(expectation* all, const ops::row& row, const driver::argument_bits& arguments) {
  const call_shape& shape = shape_of(row.op);
  expect_mirror(all, row.op, arguments);
  const bool indexed = shape.what == reads::element_draw;
  const bool in_buffer = indexed && all->record.element_buffer;
  const auto count = static_cast<i32>(arguments[indexed ? shape.count_at : 2]);
  range drawn;
  if (!indexed) {
    const auto first = static_cast<i32>(arguments[1]);
    if (first >= 0 && count > 0) drawn = {static_cast<u64>(first), static_cast<u64>(first) + static_cast<u64>(count)};
  } else if (!in_buffer) {
    drawn = range_of_elements(count, static_cast<GLenum>(arguments[shape.count_at + 1]), arguments[shape.data_at]);
  }
  const capture captured = plan(all->record, in_buffer, drawn.first, drawn.end);
  if (captured.arrays && all->record.array_buffer) {
    expect_question(all, glGetIntegerv_op::op, {GL_ARRAY_BUFFER_BINDING});
  }
  point_all(all, captured.arrays, pointers::aimed);
  const bool copies_indices = indexed && !in_buffer && arguments[shape.data_at];
  expect_parts(all, row.op, arguments, copies_indices ? pointers::copied : pointers::as_given);
  point_all(all, captured.arrays, pointers::as_given);
}

void expect_array_element(expectation* all, const driver::argument_bits& arguments) {
  expect_mirror(all, glArrayElement_op::op, arguments);
  const gl_context& record = all->record;
  bool any_buffered = false;
  u32 in_memory = 0;
  for (u32 i = 0; i < array_count; ++i) {
    any_buffered |= record.arrays[i].buffered;
    if (!record.arrays[i].buffered) in_memory |= record.enabled & 1u << i;
  }
  if (!in_memory || any_buffered) return expect_parts(all, glArrayElement_op::op, arguments);
  for (u32 i = 0; i < array_count; ++i) {
    if (in_memory & 1u << i) expect_element(all, i, static_cast<i32>(arguments[0]));
  }
}

}  // namespace fuzz
