// The arguments of a call: of every kind of function valid ones, odd ones and wrong ones. What GL itself would read of
// the application's memory is always there, in blocks of just the size.
#include <algorithm>
#include <cstring>

#include "stream.h"

namespace fuzz {

namespace {

constexpr GLenum some_enums[] = {GL_VERTEX_ARRAY,  GL_TEXTURE_2D, GL_RGBA,         GL_FLOAT,
                                 GL_UNSIGNED_BYTE, GL_DEPTH_TEST, GL_ARRAY_BUFFER, GL_TEXTURE0,
                                 GL_TRIANGLES,     GL_FRONT,      GL_MODELVIEW,    GL_COLOR};
constexpr u64 some_numbers[] = {0, 1, 2, 3, 4, 7, 8, 16, 255, 256, 0x7FFFFFFF, 0x80000000, ~u64{0}, ~u64{4}};

u64 of_number(i32 value) {
  return driver::bits_of(value);
}

u64 any_value(source* from, const ops::parameter& parameter) {
  if (parameter.is_floating) {
    const double value = between(from, -100, 100) * 0.37;
    return parameter.size == 4 ? driver::bits_of(static_cast<float>(value)) : driver::bits_of(value);
  }
  switch (below(from, 4)) {
    case 0:
      return one_of(from, some_enums);
    case 1:
      return one_of(from, some_numbers);
    case 2:
      return below(from, 64);
    default:
      return bits(from, std::min(parameter.size, 4u));
  }
}

constexpr u64 any_block = 64;

// Scalars of every kind, and blocks that are larger than what the driver reads or writes.
driver::argument_bits any_arguments(stream* run, const ops::row& row) {
  driver::argument_bits arguments = {};
  for (u32 i = 0; i < row.count; ++i) {
    const ops::parameter& parameter = row.parameters[i];
    if (!parameter.is_pointer) {
      arguments[i] = any_value(&run->random, parameter);
    } else if (!one_in(&run->random, 8)) {
      arguments[i] = driver::bits_of(take_block(&run->memory, any_block));
    }
  }
  return ops::noted(row, arguments).arguments;
}

// Counts around the room of a record, small and large, and such as no memory holds.
i32 any_count(source* from, u32 item_bytes, u32 room) {
  const i32 limit = static_cast<i32>(room / item_bytes);
  switch (below(from, 8)) {
    case 0:
      return between(from, -2, 1);
    case 1:
      return limit + between(from, -1, 1);
    case 2:
      return between(from, 0, 300);
    case 3:
      return one_in(from, 2) ? static_cast<i32>(0x80000000) : 0x7FFFFFFF;
    default:
      return between(from, 0, 8);
  }
}

u64 bytes_of(i32 count, u64 item_bytes) {
  const u64 bytes = count > 0 ? static_cast<u64>(count) * item_bytes : 0;
  return bytes > 0x7FFFFFFF ? 0 : bytes;
}

// The memory of the call's data, or null.
u64 data_of(stream* run, u64 bytes) {
  return one_in(&run->random, 8) ? 0 : driver::bits_of(take_block(&run->memory, bytes));
}

u64 any_offset(source* from) {
  return below(from, 5000);
}

bool unpacks(const stream& run, const call_shape& shape) {
  return shape.unpacks && run.expected.record.unpack_buffer && run.expected.way == library::path::threaded;
}

// On the sequential path a part says whether a buffer is bound, as it may differ from what the application bound.
bool has_unpack_buffer(const stream& run, const call_shape& shape) {
  if (!shape.unpacks) return false;
  return unpacks(run, shape) || run.expected.part[0].unpack_buffer;
}

void choose_items(stream* run, const ops::row& row, const call_shape& shape, driver::argument_bits* arguments) {
  const i32 count = any_count(&run->random, shape.item_bytes, (32 - row.count) * 8);
  (*arguments)[shape.count_at] = of_number(count);
  const u64 bytes = bytes_of(count, shape.item_bytes);
  // Null draw buffers become a zeroed slot, of which a driver reads no more than the few that it has.
  const bool too_many_for_null = row.op == glDrawBuffers_op::op && count > 60;
  (*arguments)[shape.data_at] =
      too_many_for_null ? driver::bits_of(take_block(&run->memory, bytes)) : data_of(run, bytes);
}

// The offset of the integer maps is read as an address by the library, bound buffer or not.
void choose_map(stream* run, const ops::row& row, const call_shape& shape, driver::argument_bits* arguments) {
  const i32 count = between(&run->random, -1, 40);
  (*arguments)[shape.count_at] = of_number(count);
  const u64 bytes = bytes_of(count, shape.item_bytes);
  if (!has_unpack_buffer(*run, shape)) {
    (*arguments)[shape.data_at] = data_of(run, bytes);
  } else if (row.op == glPixelMapfv_op::op) {
    (*arguments)[shape.data_at] = any_offset(&run->random);
  } else {
    (*arguments)[shape.data_at] = driver::bits_of(take_block(&run->memory, bytes));
  }
}

void choose_parameters(stream* run, const ops::row& row, const call_shape& shape, driver::argument_bits* arguments) {
  const ops::parameter_set set = ops::set_of(ops::of(row.base >= 0 ? row.base : row.op));
  constexpr GLenum first_names[] = {GL_LIGHT_MODEL_LOCAL_VIEWER,
                                    GL_FOG_INDEX,
                                    GL_AMBIENT,
                                    GL_EMISSION,
                                    GL_TEXTURE_ENV_MODE,
                                    GL_TEXTURE_GEN_MODE,
                                    GL_TEXTURE_MAG_FILTER,
                                    GL_POINT_SIZE_MIN,
                                    GL_DEPTH_TEXTURE_MODE,
                                    GL_TEXTURE_BORDER_COLOR,
                                    GL_TEXTURE_ENV,
                                    GL_TEXTURE_PRIORITY};
  const GLenum pname = one_of(&run->random, first_names) + below(&run->random, 6);
  (*arguments)[shape.count_at] = pname;
  (*arguments)[shape.data_at] =
      data_of(run, u64{ops::values_of(set, pname)} * row.parameters[shape.data_at].element_size);
}

constexpr GLenum formats[] = {GL_RGB,
                              GL_RGBA,
                              GL_BGR,
                              GL_BGRA,
                              GL_LUMINANCE,
                              GL_LUMINANCE_ALPHA,
                              GL_RED,
                              GL_RG,
                              GL_DEPTH_COMPONENT,
                              GL_COLOR_INDEX,
                              GL_RGBA_INTEGER,
                              0x1234,
                              0};
constexpr GLenum types[] = {GL_UNSIGNED_BYTE,
                            GL_UNSIGNED_BYTE,
                            GL_BYTE,
                            GL_SHORT,
                            GL_UNSIGNED_SHORT,
                            GL_INT,
                            GL_FLOAT,
                            GL_BITMAP,
                            GL_UNSIGNED_BYTE_3_3_2,
                            GL_UNSIGNED_SHORT_5_6_5,
                            GL_UNSIGNED_INT_8_8_8_8_REV,
                            GL_UNSIGNED_INT_24_8,
                            GL_FLOAT_32_UNSIGNED_INT_24_8_REV,
                            GL_UNSIGNED_SHORT_8_8_APPLE,
                            GL_DOUBLE,
                            0};

i32 any_size(source* from) {
  return one_in(from, 16) ? between(from, -3, 0) : between(from, 1, 9);
}

void choose_image(stream* run, const ops::row& row, const call_shape& shape, driver::argument_bits* arguments) {
  const bool huge = shape.dimensions > 1 && one_in(&run->random, 24);
  for (int i = 0; i < shape.dimensions; ++i) {
    (*arguments)[shape.count_at + static_cast<u32>(i)] = of_number(huge ? 0x7FFFFFFF : any_size(&run->random));
  }
  (*arguments)[row.count - 3] = one_of(&run->random, formats);
  (*arguments)[row.count - 2] = one_of(&run->random, types);
  if (has_unpack_buffer(*run, shape)) {
    (*arguments)[shape.data_at] = any_offset(&run->random);
    return;
  }
  const image_layout layout = lay_out(image_of(shape, row, *arguments), run->expected.record.unpack);
  (*arguments)[shape.data_at] = data_of(run, layout.sizable ? std::max(layout.end, layout.told) : 0);
}

void choose_sized(stream* run, const call_shape& shape, driver::argument_bits* arguments) {
  const i32 size = between(&run->random, -2, 300);
  (*arguments)[shape.count_at] = static_cast<u64>(static_cast<std::int64_t>(size));
  const bool offset = has_unpack_buffer(*run, shape);
  (*arguments)[shape.data_at] = offset ? any_offset(&run->random) : data_of(run, bytes_of(size, 1));
}

void choose_lists(stream* run, driver::argument_bits* arguments) {
  constexpr u64 type_bytes[] = {1, 1, 2, 2, 4, 4, 4, 2, 3, 4};
  const GLenum type = static_cast<GLenum>(GL_BYTE) + below(&run->random, 12);
  const i32 count = one_in(&run->random, 16) ? 0x7FFFFFFF : between(&run->random, -1, 60);
  const u64 item = type <= GL_4_BYTES ? type_bytes[type - GL_BYTE] : 0;
  const bool too_many = count > 1000 && item == 1;  // those would fit
  (*arguments)[0] = of_number(too_many ? 60 : count);
  (*arguments)[1] = type;
  (*arguments)[2] = data_of(run, bytes_of(too_many ? 60 : count, item));
}

void choose_vectors(stream* run, const ops::row& row, const call_shape& shape, driver::argument_bits* arguments) {
  const bool null = one_in(&run->random, 12);
  for (u32 i = 0; i < row.count; ++i) {
    if (!row.parameters[i].is_pointer) continue;
    const u64 bytes = u64{shape.item_bytes} * row.parameters[i].element_size;
    (*arguments)[i] = null ? 0 : driver::bits_of(take_block(&run->memory, bytes));
  }
}

u64 any_text(stream* run, u32 length, bool terminated) {
  u8* text = take_block(&run->memory, length + (terminated ? 1 : 0));
  for (u32 i = 0; i < length; ++i) text[i] = static_cast<u8>('a' + text[i] % 26);
  if (terminated) text[length] = 0;
  return driver::bits_of(text);
}

void choose_name(stream* run, driver::argument_bits* arguments) {
  constexpr u32 lengths[] = {0, 1, 7, 12, 30, 230, 231, 232, 233, 400};
  (*arguments)[2] = one_in(&run->random, 10) ? 0 : any_text(run, one_of(&run->random, lengths), true);
}

// Strings of a told length have no end of their own.
void choose_source(stream* run, driver::argument_bits* arguments) {
  const u32 count = below(&run->random, 6);
  auto* strings = reinterpret_cast<u64*>(take_block(&run->memory, count * sizeof(u64)));
  auto* lengths = reinterpret_cast<GLint*>(take_block(&run->memory, count * sizeof(GLint)));
  const bool has_lengths = one_in(&run->random, 2);
  for (u32 i = 0; i < count; ++i) {
    const u32 length = below(&run->random, 40);
    const bool terminated = !has_lengths || one_in(&run->random, 3);
    lengths[i] = terminated ? -1 - static_cast<GLint>(below(&run->random, 3)) : static_cast<GLint>(length);
    const bool missing = terminated && one_in(&run->random, 10);
    strings[i] = missing ? 0 : any_text(run, length, terminated);
  }
  (*arguments)[1] = one_in(&run->random, 16) ? of_number(-1) : count;
  (*arguments)[2] = driver::bits_of(strings);
  (*arguments)[3] = has_lengths ? driver::bits_of(lengths) : 0;
}

// ---- state ----

constexpr GLenum store_names[] = {GL_UNPACK_SWAP_BYTES,
                                  GL_UNPACK_LSB_FIRST,
                                  GL_UNPACK_ROW_LENGTH,
                                  GL_UNPACK_SKIP_ROWS,
                                  GL_UNPACK_SKIP_PIXELS,
                                  GL_UNPACK_ALIGNMENT,
                                  GL_UNPACK_IMAGE_HEIGHT,
                                  GL_UNPACK_SKIP_IMAGES,
                                  GL_PACK_SWAP_BYTES,
                                  GL_PACK_LSB_FIRST,
                                  GL_PACK_ROW_LENGTH,
                                  GL_PACK_SKIP_ROWS,
                                  GL_PACK_SKIP_PIXELS,
                                  GL_PACK_ALIGNMENT,
                                  GL_PACK_IMAGE_HEIGHT,
                                  GL_PACK_SKIP_IMAGES,
                                  0x1234};

void choose_store(stream* run, const ops::row& row, driver::argument_bits* arguments) {
  constexpr i32 values[] = {0, 0, 0, 1, 2, 3, 4, 5, 8, 12, -1, -2147483647};
  const i32 value = one_of(&run->random, values);
  (*arguments)[0] = one_of(&run->random, store_names);
  const float odd = static_cast<float>(value) + 0.75f;
  (*arguments)[1] = row.op == glPixelStoref_op::op ? driver::bits_of(odd) : of_number(value);
}

void choose_binding(stream* run, driver::argument_bits* arguments) {
  constexpr GLenum targets[] = {GL_ARRAY_BUFFER,        GL_ARRAY_BUFFER, GL_ELEMENT_ARRAY_BUFFER, GL_PIXEL_PACK_BUFFER,
                                GL_PIXEL_UNPACK_BUFFER, GL_FRAMEBUFFER,  GL_READ_FRAMEBUFFER,     0x1234};
  (*arguments)[0] = one_of(&run->random, targets);
  (*arguments)[1] = one_in(&run->random, 3) ? between(&run->random, 1, 9) : 0;
}

void choose_read(stream* run, driver::argument_bits* arguments) {
  source* from = &run->random;
  (*arguments)[0] = of_number(between(from, -20, 620));
  (*arguments)[1] = of_number(between(from, -20, 420));
  for (u32 i : {2, 3}) (*arguments)[i] = of_number(one_in(from, 10) ? between(from, -2, 0) : between(from, 1, 40));
  (*arguments)[4] = one_of(from, formats);
  (*arguments)[5] = one_of(from, types);
  image of{.width = static_cast<i32>((*arguments)[2]),
           .height = static_cast<i32>((*arguments)[3]),
           .format = static_cast<GLenum>((*arguments)[4]),
           .type = static_cast<GLenum>((*arguments)[5])};
  const pixel_store& store = run->expected.record.pack;
  // Of a bitmap, parts that lie side by side write bits of one byte.
  if (of.type == GL_BITMAP || rows_overlap(lay_out(of, store))) of.width = std::min(of.width, 1);
  (*arguments)[2] = of_number(of.width);
  const image_layout layout = lay_out(of, store);
  const bool bound = run->expected.record.pack_buffer;
  (*arguments)[6] =
      bound ? any_offset(from) : driver::bits_of(take_block(&run->memory, layout.sizable ? layout.end : 0));
}

void choose_copy(stream* run, int op, driver::argument_bits* arguments) {
  source* from = &run->random;
  u32 first = 3;
  if (op == glCopyPixels_op::op) first = 0;
  if (op == glCopyTexSubImage2D_op::op) first = 4;
  if (op == glCopyTexSubImage3D_op::op) first = 5;
  const bool flat = op == glCopyTexImage1D_op::op || op == glCopyTexSubImage1D_op::op;
  const bool huge = !flat && one_in(from, 30);
  (*arguments)[first] = of_number(between(from, -20, 620));
  (*arguments)[first + 1] = of_number(between(from, -20, 420));
  for (u32 i = 0; i < (flat ? 1u : 2u); ++i) {
    const i32 size = one_in(from, 10) ? between(from, -2, 0) : between(from, 1, 24);
    (*arguments)[first + 2 + i] = of_number(huge ? 0x7FFFFFFF : size);
  }
  constexpr GLenum kinds[] = {GL_COLOR, GL_COLOR, GL_DEPTH, GL_STENCIL};
  constexpr GLenum internal_formats[] = {
      GL_RGBA8, GL_RGB, GL_DEPTH_COMPONENT, GL_DEPTH_COMPONENT24, GL_DEPTH_COMPONENT32, GL_STENCIL_INDEX};
  if (op == glCopyPixels_op::op) (*arguments)[4] = one_of(from, kinds);
  if (op == glCopyTexImage1D_op::op || op == glCopyTexImage2D_op::op) {
    (*arguments)[2] = one_of(from, internal_formats);
  }
}

// A stencil copy of a huge area reads nothing, but its coordinates would leave what an integer can hold.
bool is_huge_and_empty(const driver::argument_bits& arguments, int op) {
  if (op != glCopyPixels_op::op) return false;
  return arguments[2] == 0x7FFFFFFF && arguments[4] != GL_COLOR && arguments[4] != GL_DEPTH;
}

// After a copy with an unpack buffer bound the parts have lost that binding. The application binds anew, since what it
// passes next would be an offset to it and an address to them.
void bind_anew(stream* run) {
  if (!run->expected.record.unpack_buffer && !run->expected.record.pack_buffer) return;
  make_call(run, glBindBuffer_op::op, {GL_PIXEL_UNPACK_BUFFER, below(&run->random, 2)});
  make_call(run, glBindBuffer_op::op, {GL_PIXEL_PACK_BUFFER, below(&run->random, 2)});
}

constexpr GLenum array_names[] = {
    GL_VERTEX_ARRAY,    GL_COLOR_ARRAY,           GL_NORMAL_ARRAY, GL_TEXTURE_COORD_ARRAY, GL_TEXTURE_COORD_ARRAY,
    GL_FOG_COORD_ARRAY, GL_SECONDARY_COLOR_ARRAY, GL_INDEX_ARRAY,  GL_EDGE_FLAG_ARRAY,     0};

bool choose_state(stream* run, const ops::row& row, int body, driver::argument_bits* arguments) {
  source* from = &run->random;
  switch (body) {
    case glPixelStoref_op::op:
    case glPixelStorei_op::op:
      choose_store(run, row, arguments);
      return true;
    case glBindBuffer_op::op:
    case glBindFramebuffer_op::op:
      choose_binding(run, arguments);
      return true;
    case glEnableClientState_op::op:
    case glDisableClientState_op::op:
      (*arguments)[0] = one_of(from, array_names);
      return true;
    case glEnableVertexAttribArray_op::op:
    case glDisableVertexAttribArray_op::op:
      (*arguments)[0] = below(from, 18);
      return true;
    case glClientActiveTexture_op::op:
      (*arguments)[0] = GL_TEXTURE0 + below(from, 10);
      return true;
    default:
      return false;
  }
}

// ---- pointers and draws ----

constexpr GLenum component_types[] = {GL_FLOAT, GL_FLOAT,          GL_DOUBLE, GL_BYTE,         GL_UNSIGNED_BYTE,
                                      GL_SHORT, GL_UNSIGNED_SHORT, GL_INT,    GL_UNSIGNED_INT, GL_HALF_FLOAT,
                                      0x1234};

bool is_pointer_call(int body) {
  constexpr int calls[] = {glVertexPointer_op::op,       glColorPointer_op::op,          glTexCoordPointer_op::op,
                           glNormalPointer_op::op,       glIndexPointer_op::op,          glFogCoordPointer_op::op,
                           glEdgeFlagPointer_op::op,     glSecondaryColorPointer_op::op, glVertexAttribPointer_op::op,
                           glVertexAttribIPointer_op::op};
  return std::ranges::find(calls, body) != std::end(calls);
}

// Any figures, and an address that nobody may touch: what is drawn is set properly before.
void choose_pointer(stream* run, const ops::row& row, int body, driver::argument_bits* arguments) {
  source* from = &run->random;
  constexpr i32 strides[] = {0, 0, 4, 16, 24, -1, 0x7FFFFFFF, static_cast<i32>(0x80000000)};
  constexpr i32 sizes[] = {0, 1, 2, 3, 4, 4, 5, -1, 0x7FFFFFFF};
  const bool has_index = body == glVertexAttribPointer_op::op || body == glVertexAttribIPointer_op::op;
  const u32 last = row.count - 1;
  if (has_index) (*arguments)[0] = below(from, 18);
  for (u32 i = has_index ? 1 : 0; i < last; ++i) (*arguments)[i] = of_number(one_of(from, sizes));
  (*arguments)[last - 1] = of_number(one_of(from, strides));
  if (body == glVertexAttribPointer_op::op) (*arguments)[3] = below(from, 2);
  if (body != glEdgeFlagPointer_op::op) {
    (*arguments)[body == glVertexAttribPointer_op::op ? 2 : last - 2] = one_of(from, component_types);
  }
  const bool bound = run->expected.record.array_buffer;
  (*arguments)[last] = bound || one_in(from, 4) ? any_offset(from) : driver::bits_of(run->memory.arena);
}

i32 any_first(source* from) {
  switch (below(from, 12)) {
    case 0:
      return -1 - static_cast<i32>(below(from, 9));
    case 1:
      return between(from, 100, 300);
    default:
      return between(from, 0, 20);
  }
}

i32 any_vertex_count(source* from) {
  return one_in(from, 10) ? between(from, -3, 0) : between(from, 1, 16);
}

void choose_array_draw(stream* run, const ops::row& row, driver::argument_bits* arguments) {
  source* from = &run->random;
  i32 first = any_first(from);
  i32 count = any_vertex_count(from);
  if (one_in(from, 40)) first = 0x7FFFFFFF - static_cast<i32>(below(from, 2));
  (*arguments)[1] = of_number(first);
  (*arguments)[2] = of_number(count);
  if (row.op == glDrawArraysInstanced_op::op) (*arguments)[3] = below(from, 3);
  if (first >= 0 && first < 1000 && count > 0) {
    prepare_arrays(run, static_cast<u32>(first), static_cast<u32>(first + count), false, 0);
  } else if (first >= 1000 && count > 0) {
    prepare_arrays(run, 0, 1, false, 0);  // no array without bytes stays
  }
}

u32 index_bytes(GLenum type) {
  return type == GL_UNSIGNED_BYTE ? 1 : type == GL_UNSIGNED_SHORT ? 2 : type == GL_UNSIGNED_INT ? 4 : 0;
}

u64 indices_of(stream* run, i32 count, GLenum type, u32 lowest, u32 span) {
  const u32 bytes = index_bytes(type);
  u8* indices = take_block(&run->memory, bytes_of(count, bytes));
  for (i32 i = 0; i < count && bytes; ++i) {
    u32 index = lowest + below(&run->random, span);
    if (bytes == 4 && one_in(&run->random, 500)) index = ~0u;
    std::memcpy(indices + static_cast<u32>(i) * bytes, &index, bytes);
  }
  return driver::bits_of(indices);
}

void choose_element_draw(stream* run, const call_shape& shape, driver::argument_bits* arguments) {
  source* from = &run->random;
  constexpr GLenum index_types[] = {GL_UNSIGNED_BYTE, GL_UNSIGNED_SHORT, GL_UNSIGNED_SHORT, GL_UNSIGNED_INT, GL_FLOAT};
  const i32 count = any_vertex_count(from);
  const GLenum type = one_of(from, index_types);
  (*arguments)[shape.count_at] = of_number(count);
  (*arguments)[shape.count_at + 1] = type;
  const u32 lowest = below(from, 40);
  const u32 span = 1 + below(from, 12);
  // Made first: what sets up the arrays are calls, whose blocks end with them.
  if (run->expected.record.element_buffer) {
    prepare_arrays(run, 0, 16, false, 0);
    (*arguments)[shape.data_at] = any_offset(from);
    return;
  }
  prepare_arrays(run, lowest, lowest + span, false, 0);
  (*arguments)[shape.data_at] = one_in(from, 16) ? 0 : indices_of(run, count, type, lowest, span);
}

void choose_element(stream* run, driver::argument_bits* arguments) {
  const u32 element = below(&run->random, 20);
  (*arguments)[0] = element;
  constexpr u32 longest_normal = 3 * sizeof(GLdouble);
  prepare_arrays(run, element, element + 1, true, longest_normal);
}

// ---- the exceptions ----

// The one uniform that hands the application's own memory on: it stays until the parts have replayed, and where it is
// large the parts free it.
void choose_raw_uniform(stream* run, const call_shape& shape, driver::argument_bits* arguments) {
  constexpr u64 room = 28 * sizeof(u64);
  const i32 count = between(&run->random, 0, 14);
  const u64 bytes = bytes_of(count, shape.item_bytes);
  (*arguments)[1] = of_number(count);
  u8* values = take_kept_block(&run->memory, bytes);
  (*arguments)[3] = driver::bits_of(values);
  if (bytes > room && run->expected.way == library::path::threaded) run->memory.kept.pop_back();
}

void choose_by_shape(stream* run, const ops::row& row, int body, driver::argument_bits* arguments) {
  const call_shape& shape = shape_of(row.op);
  switch (shape.what) {
    case reads::vectors:
      return choose_vectors(run, row, shape, arguments);
    case reads::parameters:
      return choose_parameters(run, row, shape, arguments);
    case reads::items:
      if (body == glUniformMatrix2x3fv_op::op) return choose_raw_uniform(run, shape, arguments);
      if (shape.unpacks) return choose_map(run, row, shape, arguments);
      return choose_items(run, row, shape, arguments);
    case reads::image:
      return choose_image(run, row, shape, arguments);
    case reads::sized:
      return choose_sized(run, shape, arguments);
    case reads::lists:
      return choose_lists(run, arguments);
    case reads::stipple:
      (*arguments)[0] = has_unpack_buffer(*run, shape) ? any_offset(&run->random) : data_of(run, ops::stipple_bytes);
      return;
    case reads::text:
      return choose_name(run, arguments);
    case reads::source:
      return choose_source(run, arguments);
    case reads::array_draw:
      return choose_array_draw(run, row, arguments);
    case reads::element_draw:
      return choose_element_draw(run, shape, arguments);
    case reads::array_element:
      return choose_element(run, arguments);
    case reads::unknown:
    case reads::some_bytes:
    case reads::nothing:
    case reads::elsewhere:
    case reads::texel:
    case reads::arrays:
      return;  // the last three of no op of the basic mode
  }
}

bool is_drawn(const call_shape& shape) {
  return shape.what == reads::array_draw || shape.what == reads::element_draw || shape.what == reads::array_element;
}

}  // namespace

void choose_call(stream* run, const ops::row& row) {
  const int body = row.base >= 0 ? row.base : row.op;
  const call_shape& shape = shape_of(row.op);
  driver::argument_bits arguments = {};
  if (is_drawn(shape) || shape.what == reads::nothing || shape.what == reads::source) {
    for (u32 i = 0; i < row.count; ++i) {
      if (!row.parameters[i].is_pointer) arguments[i] = any_value(&run->random, row.parameters[i]);
    }
  } else {
    arguments = any_arguments(run, row);
  }
  // The EXT names of pointer calls and setters change nothing here and need no care.
  const bool forwards = row.base < 0 || row.threaded == ops::family::alias;
  if (forwards && choose_state(run, row, body, &arguments)) return make_call(run, row, arguments);
  if (forwards && is_pointer_call(body)) {
    choose_pointer(run, row, body, &arguments);
    return make_call(run, row, arguments);
  }
  if (body == glReadPixels_op::op) choose_read(run, &arguments);
  if (is_copy(body)) choose_copy(run, body, &arguments);
  if (is_huge_and_empty(arguments, body)) return ruin_blocks_of_call(&run->memory);
  choose_by_shape(run, row, body, &arguments);
  make_call(run, row, arguments);
  if (is_drawn(shape)) ruin_arrays(run);
  if (is_copy(body)) bind_anew(run);
}

}  // namespace fuzz
