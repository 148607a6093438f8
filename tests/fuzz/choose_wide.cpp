// The calls of the extended mode: those without a subject of their own are chosen by what they read, with everything
// there that GL would read, in blocks of just the size, and nothing more.
#include <algorithm>
#include <cstring>

#include "argument_memory.h"
#include "wide_stream.h"

namespace fuzz {

namespace {

constexpr GLenum some_names[] = {GL_TEXTURE_2D, GL_RGBA,        GL_FLOAT, GL_UNSIGNED_BYTE, GL_DEPTH_TEST,
                                 GL_TEXTURE0,   GL_TRIANGLES,   GL_FRONT, GL_COLOR,         GL_MODELVIEW,
                                 GL_LINEAR,     GL_FRAMEBUFFER, GL_LESS,  GL_FUNC_ADD};
constexpr u64 some_figures[] = {0, 1, 2, 3, 4, 7, 8, 16, 255, 256, 0x7FFFFFFF, 0x80000000, ~u64{0}, ~u64{4}};
constexpr u64 any_block = 64;

u64 any_scalar(source* from, const ops::parameter& parameter) {
  if (parameter.is_floating) {
    const double value = between(from, -100, 100) * 0.37;
    return parameter.size == 4 ? driver::bits_of(static_cast<float>(value)) : driver::bits_of(value);
  }
  switch (below(from, 4)) {
    case 0:
      return one_of(from, some_names);
    case 1:
      return one_of(from, some_figures);
    case 2:
      return below(from, 64);
    default:
      return bits(from, std::min(parameter.size, 4u));
  }
}

u64 block_of(stream* run, u64 bytes) {
  return driver::bits_of(take_block(&run->memory, bytes));
}

u64 block_or_null(stream* run, u64 bytes) {
  return one_in(&run->random, 8) ? 0 : block_of(run, bytes);
}

// Around the room of a record, small and large.
i32 any_count(source* from, u32 item_bytes) {
  const i32 limit = static_cast<i32>(224 / std::max(item_bytes, 1u));
  switch (below(from, 8)) {
    case 0:
      return between(from, -2, 1);
    case 1:
      return limit + between(from, -3, 3);
    case 2:
      return between(from, 0, 300);
    default:
      return between(from, 0, 8);
  }
}

u64 bytes_of(i32 count, u64 item_bytes) {
  return count > 0 ? static_cast<u64>(count) * item_bytes : 0;
}

u64 text_of(stream* run, u32 length, bool terminated) {
  u8* text = take_block(&run->memory, length + (terminated ? 1 : 0));
  for (u32 i = 0; i < length; ++i) text[i] = static_cast<u8>('a' + text[i] % 26);
  if (terminated) text[length] = 0;
  return driver::bits_of(text);
}

u64 any_text(stream* run) {
  constexpr u32 lengths[] = {0, 1, 7, 12, 30, 100, 230, 231, 232, 233, 400};
  return text_of(run, one_of(&run->random, lengths), true);
}

bool has_unpack_buffer(const stream& run, const call_shape& shape) {
  return shape.unpacks && run.wide.part.bound[unpack_target];
}

// ---- by what is read ----

void fill_items(stream* run, const ops::row& row, const call_shape& shape, driver::argument_bits* a) {
  const i32 count = any_count(&run->random, shape.item_bytes);
  (*a)[shape.count_at] = bits_of_number(count);
  const bool may_be_null = row.threaded == ops::family::items && one_in(&run->random, 8);
  (*a)[shape.data_at] = may_be_null ? 0 : block_of(run, bytes_of(count, shape.item_bytes));
}

constexpr GLenum formats[] = {GL_RGB,          GL_RGBA,
                              GL_BGR,          GL_BGRA,
                              GL_LUMINANCE,    GL_LUMINANCE_ALPHA,
                              GL_RED,          GL_RG,
                              GL_RGBA_INTEGER, GL_DEPTH_COMPONENT,
                              GL_COLOR_INDEX};
constexpr GLenum types[] = {GL_UNSIGNED_BYTE,
                            GL_BYTE,
                            GL_SHORT,
                            GL_UNSIGNED_SHORT,
                            GL_INT,
                            GL_FLOAT,
                            GL_HALF_FLOAT,
                            GL_UNSIGNED_BYTE_3_3_2,
                            GL_UNSIGNED_SHORT_5_6_5,
                            GL_UNSIGNED_INT_8_8_8_8_REV,
                            GL_UNSIGNED_INT_24_8,
                            GL_FLOAT_32_UNSIGNED_INT_24_8_REV};

void fill_image(stream* run, const ops::row& row, const call_shape& shape, driver::argument_bits* a) {
  source* from = &run->random;
  for (int i = 0; i < shape.dimensions; ++i) {
    const i32 size = one_in(from, 16) ? between(from, -3, 0) : between(from, 1, 9);
    (*a)[shape.count_at + static_cast<u32>(i)] = bits_of_number(size);
  }
  const bool is_bitmap = one_in(from, 12);
  (*a)[row.count - 3] = is_bitmap ? GL_COLOR_INDEX : one_of(from, formats);
  (*a)[row.count - 2] = is_bitmap ? GL_BITMAP : one_of(from, types);
  if (has_unpack_buffer(*run, shape)) {
    (*a)[shape.data_at] = below(from, 5000);
    return;
  }
  const image_layout layout = lay_out(image_of(shape, row, *a), run->wide.part.unpack);
  // What a copy takes begins at the image's address and has whole rows.
  (*a)[shape.data_at] = block_or_null(run, layout.sizable ? std::max(layout.end, layout.told) : 0);
}

void fill_sized(stream* run, const call_shape& shape, driver::argument_bits* a) {
  const i32 size = between(&run->random, -2, 300);
  (*a)[shape.count_at] = static_cast<u64>(std::int64_t{size});
  const bool is_offset = has_unpack_buffer(*run, shape);
  (*a)[shape.data_at] = is_offset ? below(&run->random, 5000) : block_or_null(run, bytes_of(size, 1));
}

void fill_lists(stream* run, driver::argument_bits* a) {
  const GLenum type = static_cast<GLenum>(GL_BYTE) + below(&run->random, 12);
  const i32 count = between(&run->random, -1, 60);
  (*a)[0] = bits_of_number(count);
  (*a)[1] = type;
  (*a)[2] = block_of(run, bytes_of(count, list_bytes(type)));
}

void fill_vectors(stream* run, const ops::row& row, const call_shape& shape, driver::argument_bits* a) {
  for (u32 i = 0; i < row.count; ++i) {
    if (!row.parameters[i].is_pointer) continue;
    (*a)[i] = block_of(run, u64{shape.item_bytes} * row.parameters[i].element_size);
  }
}

void fill_some(stream* run, const ops::row& row, driver::argument_bits* a) {
  for (u32 i = 0; i < row.count; ++i) {
    if (row.parameters[i].is_pointer) (*a)[i] = block_or_null(run, any_block);
  }
}

void fill_parameters(stream* run, const ops::row& row, driver::argument_bits* a) {
  const u32 last = row.count - 1;
  (*a)[place_of_pname(row)] = pname_for(row, below(&run->random, 64));
  // No program passes less than one value, whatever GL makes of the name.
  const u32 values = std::max(values_by_pname(row, *a), 1u);
  (*a)[last] = block_of(run, u64{values} * row.parameters[last].element_size);
}

void fill_texel(stream* run, const ops::row& row, driver::argument_bits* a) {
  (*a)[row.count - 3] = one_of(&run->random, formats);
  (*a)[row.count - 2] = one_of(&run->random, types);
  (*a)[row.count - 1] = block_or_null(run, bytes_of_texel(row, *a));
}

void fill_arrays(stream* run, const ops::row& row, const call_shape& shape, driver::argument_bits* a) {
  (*a)[shape.count_at] = bits_of_number(between(&run->random, 0, one_in(&run->random, 8) ? 90 : 12));
  if (row.op == glShaderBinary_op::op) (*a)[4] = below(&run->random, 500);
  const bool none = row.op == glBindBuffersRange_op::op && one_in(&run->random, 8);
  for (u32 i = 0; i < row.count; ++i) {
    if (!row.parameters[i].is_pointer) continue;
    const bool is_text = row.op == glSpecializeShader_op::op && i == 1;
    (*a)[i] = none ? 0 : is_text ? any_text(run) : block_of(run, bytes_of_array(row, i, *a));
  }
}

// Strings of a told length have no end of their own.
void fill_source(stream* run, const ops::row& row, driver::argument_bits* a) {
  const u32 count = below(&run->random, 6);
  auto* strings = reinterpret_cast<u64*>(take_block(&run->memory, count * sizeof(u64)));
  auto* lengths = reinterpret_cast<GLint*>(take_block(&run->memory, count * sizeof(GLint)));
  const bool has_lengths = row.op == glShaderSource_op::op && one_in(&run->random, 2);
  for (u32 i = 0; i < count; ++i) {
    const u32 length = below(&run->random, 60);
    const bool terminated = !has_lengths || one_in(&run->random, 3);
    lengths[i] = terminated ? -1 : static_cast<GLint>(length);
    strings[i] = text_of(run, length, terminated);
  }
  (*a)[1] = count;
  (*a)[2] = driver::bits_of(strings);
  if (row.op == glShaderSource_op::op) (*a)[3] = has_lengths ? driver::bits_of(lengths) : 0;
}

// What GL only takes, or writes.
void fill_rest(stream* run, const ops::row& row, driver::argument_bits* a) {
  const bool creates = makes_names(row.op);
  const i32 count = one_in(&run->random, 6) ? between(&run->random, -1, 100) : between(&run->random, 0, 6);
  if (creates && !row.result_size) (*a)[row.count - 2] = bits_of_number(count);
  for (u32 i = 0; i < row.count; ++i) {
    if (row.parameters[i].is_pointer) (*a)[i] = block_of(run, creates ? bytes_of(count, sizeof(GLuint)) : any_block);
  }
}

void fill_memory(stream* run, const ops::row& row, driver::argument_bits* a) {
  const call_shape& shape = shape_of(row.op);
  if (takes_pname(row)) return fill_parameters(run, row, a);
  switch (shape.what) {
    case reads::vectors:
      return fill_vectors(run, row, shape, a);
    case reads::items:
      if (!has_unpack_buffer(*run, shape)) return fill_items(run, row, shape, a);
      (*a)[shape.count_at] = below(&run->random, 40);
      (*a)[shape.data_at] = below(&run->random, 5000);
      return;
    case reads::image:
      return fill_image(run, row, shape, a);
    case reads::sized:
      return fill_sized(run, shape, a);
    case reads::lists:
      return fill_lists(run, a);
    case reads::stipple:
      (*a)[0] = has_unpack_buffer(*run, shape) ? below(&run->random, 5000) : block_of(run, ops::stipple_bytes);
      return;
    case reads::text:
      (*a)[shape.data_at] = any_text(run);
      return;
    case reads::source:
      return fill_source(run, row, a);
    case reads::texel:
      return fill_texel(run, row, a);
    case reads::arrays:
      return fill_arrays(run, row, shape, a);
    case reads::some_bytes:
      return fill_some(run, row, a);
    default:
      return fill_rest(run, row, a);
  }
}

void fill_special(stream* run, const ops::row& row, driver::argument_bits* a) {
  constexpr GLenum targets[] = {GL_FRAMEBUFFER, GL_READ_FRAMEBUFFER, GL_DRAW_FRAMEBUFFER, 0x1234};
  constexpr GLenum stores[] = {
      GL_PACK_SWAP_BYTES,    GL_PACK_LSB_FIRST,   GL_PACK_ROW_LENGTH,     GL_PACK_SKIP_ROWS,
      GL_PACK_SKIP_PIXELS,   GL_PACK_ALIGNMENT,   GL_PACK_IMAGE_HEIGHT,   GL_PACK_SKIP_IMAGES,
      GL_UNPACK_SWAP_BYTES,  GL_UNPACK_LSB_FIRST, GL_UNPACK_ROW_LENGTH,   GL_UNPACK_SKIP_ROWS,
      GL_UNPACK_SKIP_PIXELS, GL_UNPACK_ALIGNMENT, GL_UNPACK_IMAGE_HEIGHT, GL_UNPACK_SKIP_IMAGES};
  constexpr i32 values[] = {0, 0, 0, 1, 2, 3, 4, 5, 8, 12, -1};
  if (row.op == glBindFramebuffer_op::op) {
    (*a)[0] = one_of(&run->random, targets);
    (*a)[1] = one_in(&run->random, 3) ? between(&run->random, 1, 5) : 0;
  }
  if (row.op == glPixelTransferf_op::op || row.op == glPixelTransferi_op::op) {
    constexpr GLenum transfers[] = {GL_MAP_COLOR, GL_RED_SCALE, GL_ALPHA_BIAS, GL_DEPTH_SCALE, GL_INDEX_SHIFT};
    const i32 value = between(&run->random, 0, 2);
    (*a)[0] = one_of(&run->random, transfers);
    (*a)[1] = row.op == glPixelTransferi_op::op ? bits_of_number(value) : driver::bits_of(static_cast<float>(value));
  }
  if (row.op == glPixelStorei_op::op || row.op == glPixelStoref_op::op) {
    const i32 value = one_of(&run->random, values);
    (*a)[0] = one_of(&run->random, stores);
    (*a)[1] = row.op == glPixelStorei_op::op ? bits_of_number(value) : driver::bits_of(static_cast<float>(value));
  }
}

// ---- which call ----

// Those that are chosen as a subject, and the two that the library alone sends.
bool has_subject(const ops::row& row) {
  const int op = function_of(row.op);
  constexpr int others[] = {glGetString_op::op, glGetStringi_op::op,       glReadPixels_op::op,
                            glIsSync_op::op,    glGetBufferSubData_op::op, glGetNamedBufferSubData_op::op,
                            glGetSynciv_op::op};
  constexpr int states[] = {glPixelStorei_op::op, glPixelStoref_op::op, glPixelTransferi_op::op,
                            glPixelTransferf_op::op};
  const bool is_state = std::ranges::find(states, op) == std::end(states);
  gl_model probe = fresh_model(0, true, true);
  if (row.is_driver_op || row.threaded == ops::family::none || is_draw(op) || is_copy(op)) return true;
  if (is_mapping_call(op) || is_fence_call(op) || is_query_call(op) || asks_query(op)) return true;
  if (std::ranges::find(others, op) != std::end(others)) return true;
  return is_state && change_state(&probe, op, {});
}

const std::vector<const ops::row*>& rows_without_subject() {
  static const std::vector<const ops::row*> rows = [] {
    std::vector<const ops::row*> found;
    for (const ops::row& row : ops::all()) {
      if (!has_subject(row)) found.push_back(&row);
    }
    return found;
  }();
  return rows;
}

bool is_waited_for(const stream& run, const ops::row& row) {
  const ops::row& travels = row.threaded == ops::family::alias ? ops::of(row.base) : row;
  if (!is_threaded(run.wide)) return false;
  if (run.wide.mirrors && travels.threaded == ops::family::query) return false;
  return travels.sync || (!run.wide.mirrors && makes_names(travels.op));
}

void choose_any(stream* run, bool may_wait) {
  const std::vector<const ops::row*>& rows = rows_without_subject();
  const ops::row* row = rows[bits(&run->random, 2) % rows.size()];
  if (!may_wait && is_waited_for(*run, *row)) return;
  // How a blit from the window is put together on a part is not followed.
  if (function_of(row->op) == glBlitFramebuffer_op::op && !run->wide.part.read_framebuffer) return;
  driver::argument_bits a = {};
  for (u32 i = 0; i < row->count; ++i) {
    if (!row->parameters[i].is_pointer) a[i] = any_scalar(&run->random, row->parameters[i]);
  }
  fill_memory(run, *row, &a);
  fill_special(run, *row, &a);
  make_call(run, *row, ops::noted(*row, a).arguments);
}

}  // namespace

u64 bits_of_number(i32 value) {
  return driver::bits_of(value);
}

void choose_wide_call(stream* run, bool may_wait_now) {
  // On the sequential path nobody waits for another thread.
  const bool may_wait = may_wait_now || !is_threaded(run->wide);
  const u32 chance = below(&run->random, 100);
  if (chance < 15) return choose_objects(run);
  if (chance < 28) return choose_draw(run);
  if (chance < 31) return choose_fence(run, may_wait);
  if (chance < 34) return choose_query(run, may_wait);
  if (chance < 42 && may_wait) return choose_mapping(run);
  if (chance < 46 && may_wait) return choose_pixels(run);
  choose_any(run, may_wait);
}

}  // namespace fuzz
