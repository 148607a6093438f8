#include "gl_context.h"

#include <atomic>
#include <cstring>

namespace fuzz {

namespace {

using arguments_of = const driver::argument_bits&;

constexpr u64 empty_digest = driver::empty_digest;

u64 add(u64 digest, u64 value) {
  digest = (digest ^ value) * 0x100000001B3;
  return digest ^ digest >> 29;
}

u64 add_bytes(u64 digest, const void* memory, u64 count) {
  const auto* bytes = static_cast<const u8*>(memory);
  digest = add(digest, count);
  for (; count >= 8; count -= 8, bytes += 8) {
    u64 word;
    std::memcpy(&word, bytes, 8);
    digest = add(digest, word);
  }
  if (count == 0) return digest;
  u64 rest = 0;
  std::memcpy(&rest, bytes, count);
  return add(digest, rest);
}

const void* at(u64 address) {
  return reinterpret_cast<const void*>(address);
}

void read(event* seen, u64 address, u64 count) {
  if (address < lowest_address || count == 0) return;
  if (seen->head == 0) std::memcpy(&seen->head, at(address), count < 8 ? count : 8);
  seen->memory = add_bytes(seen->memory, at(address), count);
}

i32 number(u64 bits) {
  return static_cast<i32>(bits);
}

GLenum name(u64 bits) {
  return static_cast<GLenum>(bits);
}

// ---- state ----

i32* store_field(pixel_store* store, GLenum first, GLenum pname) {
  i32* const fields[] = {&store->swap_bytes, &store->lsb_first,   &store->row_length,
                         &store->skip_rows,  &store->skip_pixels, &store->alignment};
  return pname >= first && pname < first + 6 ? fields[pname - first] : nullptr;
}

i32* store_field(gl_context* context, GLenum pname) {
  switch (pname) {
    case GL_PACK_IMAGE_HEIGHT:
      return &context->pack.image_height;
    case GL_PACK_SKIP_IMAGES:
      return &context->pack.skip_images;
    case GL_UNPACK_IMAGE_HEIGHT:
      return &context->unpack.image_height;
    case GL_UNPACK_SKIP_IMAGES:
      return &context->unpack.skip_images;
    default:
      break;
  }
  i32* field = store_field(&context->pack, GL_PACK_SWAP_BYTES, pname);
  return field ? field : store_field(&context->unpack, GL_UNPACK_SWAP_BYTES, pname);
}

// What GL refuses leaves the state as it is. Flags keep 8 bits.
void set_store(gl_context* context, GLenum pname, i32 value) {
  i32* field = store_field(context, pname);
  if (!field) return;
  if (field == &context->pack.alignment || field == &context->unpack.alignment) {
    if (value == 1 || value == 2 || value == 4 || value == 8) *field = value;
    return;
  }
  const bool flag = pname == GL_PACK_SWAP_BYTES || pname == GL_PACK_LSB_FIRST || pname == GL_UNPACK_SWAP_BYTES ||
                    pname == GL_UNPACK_LSB_FIRST;
  if (flag) {
    *field = value & 0xFF;
  } else if (value >= 0) {
    *field = value;
  }
}

// Toward zero; what an integer cannot hold becomes the largest or is refused.
i32 truncated(u64 bits) {
  GLfloat value;
  std::memcpy(&value, &bits, sizeof value);
  if (value > -2147483648.0f && value < 2147483648.0f) return static_cast<i32>(value);
  return value > 0 ? 0x7FFFFFFF : -1;
}

void push_attribs(gl_context* context, GLbitfield mask) {
  if (!context->keeps_attribs || context->attribs.size() == attrib_depth) return;
  context->attribs.push_back({(mask & GL_CLIENT_PIXEL_STORE_BIT) != 0, context->pack, context->unpack});
}

void pop_attribs(gl_context* context) {
  if (context->attribs.empty()) return;
  const saved_attribs& saved = context->attribs.back();
  if (saved.pixels) {
    context->pack = saved.pack;
    context->unpack = saved.unpack;
  }
  context->attribs.pop_back();
}

void bind(gl_context* context, GLenum target, GLuint buffer) {
  if (target == GL_ARRAY_BUFFER) context->array_buffer = buffer;
  if (target == GL_ELEMENT_ARRAY_BUFFER) context->element_buffer = buffer;
  if (target == GL_PIXEL_PACK_BUFFER) context->pack_buffer = buffer;
  if (target == GL_PIXEL_UNPACK_BUFFER) context->unpack_buffer = buffer;
  if (target == GL_FRAMEBUFFER) context->framebuffer = buffer;
}

void enable(gl_context* context, int array, bool on) {
  const u32 bit = 1u << (array < 0 ? 0 : array);
  context->enabled = on ? context->enabled | bit : context->enabled & ~bit;
}

int attribute_number(u64 attribute) {
  return name(attribute) < 16 ? static_cast<int>(attribute) + static_cast<int>(first_attribute) : -1;
}

void point(gl_context* context, int number, client_array array) {
  if (number < 0) return;
  array.is_set = true;
  array.buffered = context->array_buffer != 0;
  context->arrays[number] = array;
}

void set_pointer(gl_context* context, GLenum array, i32 size, u64 type, u64 stride, u64 pointer) {
  client_array entry{.name = array, .size = size, .type = name(type), .stride = number(stride), .pointer = pointer};
  point(context, array_number(*context, array), entry);
}

void set_attribute(gl_context* context, arguments_of a, u8 normalized, u64 stride, u64 pointer) {
  client_array entry{.name = name(a[0]),
                     .size = number(a[1]),
                     .type = name(a[2]),
                     .normalized = normalized,
                     .stride = number(stride),
                     .pointer = pointer};
  point(context, attribute_number(a[0]), entry);
}

void track_arrays(gl_context* context, int op, arguments_of a) {
  switch (op) {
    case glVertexPointer_op::op:
      return set_pointer(context, GL_VERTEX_ARRAY, number(a[0]), a[1], a[2], a[3]);
    case glColorPointer_op::op:
      return set_pointer(context, GL_COLOR_ARRAY, number(a[0]), a[1], a[2], a[3]);
    case glTexCoordPointer_op::op:
      return set_pointer(context, GL_TEXTURE_COORD_ARRAY, number(a[0]), a[1], a[2], a[3]);
    case glSecondaryColorPointer_op::op:
      return set_pointer(context, GL_SECONDARY_COLOR_ARRAY, number(a[0]), a[1], a[2], a[3]);
    case glNormalPointer_op::op:
      return set_pointer(context, GL_NORMAL_ARRAY, 3, a[0], a[1], a[2]);
    case glIndexPointer_op::op:
      return set_pointer(context, GL_INDEX_ARRAY, 1, a[0], a[1], a[2]);
    case glFogCoordPointer_op::op:
      return set_pointer(context, GL_FOG_COORD_ARRAY, 1, a[0], a[1], a[2]);
    case glEdgeFlagPointer_op::op:
      return set_pointer(context, GL_EDGE_FLAG_ARRAY, 1, GL_UNSIGNED_BYTE, a[0], a[1]);
    case glVertexAttribPointer_op::op:
      return set_attribute(context, a, static_cast<u8>(a[3]), a[4], a[5]);
    case glVertexAttribIPointer_op::op:
      return set_attribute(context, a, 0, a[3], a[4]);
    default:
      return;
  }
}

void track(gl_context* context, int op, arguments_of a) {
  switch (op) {
    case glPixelStorei_op::op:
      return set_store(context, name(a[0]), number(a[1]));
    case glPixelStoref_op::op:
      return set_store(context, name(a[0]), truncated(a[1]));
    case glPushClientAttrib_op::op:
      return push_attribs(context, name(a[0]));
    case glPopClientAttrib_op::op:
      return pop_attribs(context);
    case glBindBuffer_op::op:
    case glBindFramebuffer_op::op:
      return bind(context, name(a[0]), name(a[1]));
    case glClientActiveTexture_op::op:
      if (name(a[0]) - GL_TEXTURE0 <= 8) context->client_texture = name(a[0]) - GL_TEXTURE0;
      return;
    case glEnableClientState_op::op:
    case glDisableClientState_op::op:
      return enable(context, array_number(*context, name(a[0])), op == glEnableClientState_op::op);
    case glEnableVertexAttribArray_op::op:
    case glDisableVertexAttribArray_op::op:
      return enable(context, attribute_number(a[0]), op == glEnableVertexAttribArray_op::op);
    default:
      return track_arrays(context, op, a);
  }
}

// ---- reads ----

constexpr u64 last_vertex = 1 << 20;

void read_vertex(const gl_context& context, event* seen, u64 vertex) {
  if (vertex > last_vertex) return;
  for (u32 i = 0; i < array_count; ++i) {
    const client_array& array = context.arrays[i];
    if (!(context.enabled & 1u << i) || !is_readable(array)) continue;
    read(seen, array.pointer + vertex * bytes_apart(array), static_cast<u64>(array.size) * component_bytes(array.type));
  }
}

void read_arrays(const gl_context& context, event* seen, i32 first, i32 count) {
  if (first < 0 || count < 1 || first > static_cast<i32>(last_vertex)) return;
  for (i32 i = 0; i < count; ++i) read_vertex(context, seen, static_cast<u64>(first) + static_cast<u64>(i));
}

u32 index_bytes(GLenum type) {
  return type == GL_UNSIGNED_BYTE ? 1 : type == GL_UNSIGNED_SHORT ? 2 : type == GL_UNSIGNED_INT ? 4 : 0;
}

void read_elements(const gl_context& context, event* seen, i32 count, GLenum type, u64 indices) {
  const u32 bytes = index_bytes(type);
  if (bytes == 0 || count < 1) return;
  if (context.element_buffer) {
    for (i32 i = 0; i < count && i < 8; ++i)
      read_vertex(context, seen, index_in_buffer(indices + bytes * static_cast<u32>(i)));
    return;
  }
  if (indices < lowest_address) return;
  read(seen, indices, u64{bytes} * static_cast<u64>(count));
  for (i32 i = 0; i < count; ++i) {
    u32 index = 0;
    std::memcpy(&index, at(indices + bytes * static_cast<u32>(i)), bytes);
    read_vertex(context, seen, index);
  }
}

void read_vectors(event* seen, const ops::row& row, arguments_of a, u32 elements) {
  for (u32 i = 0; i < row.count; ++i) {
    if (row.parameters[i].is_pointer) read(seen, a[i], u64{elements} * row.parameters[i].element_size);
  }
}

void read_some(event* seen, const ops::row& row, arguments_of a) {
  for (u32 i = 0; i < row.count; ++i) {
    if (row.parameters[i].is_pointer && row.parameters[i].is_const) read(seen, a[i], ops::some_bytes);
  }
}

u64 sane_bytes(i32 count, u64 item) {
  const u64 bytes = count > 0 ? static_cast<u64>(count) * item : 0;
  return bytes > 0x7FFFFFFF ? 0 : bytes;
}

void read_image(event* seen, const image& of, const pixel_store& store, u64 address) {
  const image_layout layout = lay_out(of, store);
  if (!layout.sizable) return;
  for (u64 z = 0; z < static_cast<u64>(of.depth); ++z) {
    for (u64 y = 0; y < static_cast<u64>(of.height); ++y) {
      read(seen, address + layout.first + z * layout.slice + y * layout.row, layout.row_bytes);
    }
  }
}

// The strings one behind the other, each up to its end or its length.
void read_source(event* seen, i32 count, u64 strings, u64 lengths) {
  const auto* texts = reinterpret_cast<const GLchar* const*>(strings);
  const auto* sizes = reinterpret_cast<const GLint*>(lengths);
  for (i32 i = 0; i < count; ++i) {
    if (!texts[i]) continue;
    const u64 length = sizes && sizes[i] >= 0 ? strnlen(texts[i], static_cast<u64>(sizes[i])) : std::strlen(texts[i]);
    for (u64 k = 0; k < length; ++k) seen->memory = add(seen->memory, static_cast<u8>(texts[i][k]));
  }
}

void read_memory(const gl_context& context, event* seen, const ops::row& row, arguments_of a) {
  const call_shape& shape = shape_of(row.op);
  const u64 data = a[shape.data_at];
  if (shape.unpacks && context.unpack_buffer) return;
  switch (shape.what) {
    case reads::unknown:
    case reads::elsewhere:
    case reads::nothing:
      return;
    case reads::some_bytes:
      return read_some(seen, row, a);
    case reads::vectors:
      return read_vectors(seen, row, a, shape.item_bytes);
    case reads::parameters:
      return read(
          seen, data,
          u64{ops::values_of(ops::set_of(row), name(a[shape.count_at]))} * row.parameters[shape.data_at].element_size);
    case reads::items:
      return read(seen, data, sane_bytes(number(a[shape.count_at]), shape.item_bytes));
    case reads::image:
      return read_image(seen, image_of(shape, row, a), context.unpack, data);
    case reads::sized:
      return read(seen, data, sane_bytes(number(a[shape.count_at]), 1));
    case reads::lists:
      return read(seen, data, sane_bytes(number(a[0]), list_bytes(name(a[1]))));
    case reads::stipple:
      return read(seen, data, ops::stipple_bytes);
    case reads::text:
      return data < lowest_address ? void() : read(seen, data, std::strlen(static_cast<const char*>(at(data))) + 1);
    case reads::source:
      return read_source(seen, number(a[1]), a[2], a[3]);
    case reads::texel:
    case reads::arrays:
      return;  // of the extended mode
    case reads::array_draw:
      return read_arrays(context, seen, number(a[1]), number(a[2]));
    case reads::element_draw:
      return read_elements(context, seen, number(a[shape.count_at]), name(a[shape.count_at + 1]), data);
    case reads::array_element:
      return number(a[0]) < 0 ? void() : read_vertex(context, seen, static_cast<u64>(a[0]));
  }
}

// ---- writes ----

template <class T>
void store(u64 address, T value) {
  if (address < lowest_address) return;
  std::atomic_ref<T>(*reinterpret_cast<T*>(address)).store(value, std::memory_order_relaxed);
}

u8 pixel_byte(const gl_context& context, i32 x, i32 y, u64 byte) {
  const u64 place = static_cast<u64>(context.part + 1) * 1000003 + static_cast<u64>(x + 5000) * 8191 +
                    static_cast<u64>(y + 5000) * 131071 + byte * 31;
  return static_cast<u8>(place * 0x9E3779B97F4A7C15 >> 56);
}

void write_pixels(const gl_context& context, arguments_of a) {
  if (context.pack_buffer || a[6] < lowest_address) return;
  const image of{
      .width = number(a[2]), .height = number(a[3]), .dimensions = 2, .format = name(a[4]), .type = name(a[5])};
  const image_layout layout = lay_out(of, context.pack);
  if (!layout.sizable || layout.pixel == 0) return;
  u8* pixels = context.expects ? context.pixel_shadow : reinterpret_cast<u8*>(a[6]);
  for (i32 y = 0; y < of.height; ++y) {
    u8* row = pixels + layout.first + static_cast<u64>(y) * layout.row;
    for (u64 byte = 0; byte < layout.row_bytes; ++byte) {
      row[byte] = pixel_byte(context, number(a[0]) + static_cast<i32>(byte / layout.pixel), number(a[1]) + y,
                             byte % layout.pixel);
    }
  }
}

void write_figures(gl_context* context, int op, arguments_of a) {
  if (op == glGetTexLevelParameteriv_op::op && name(a[2]) == GL_TEXTURE_INTERNAL_FORMAT) {
    return store(a[3], static_cast<GLint>(internal_format_of(name(a[0]))));
  }
  if (op == glGetIntegerv_op::op) {
    if (name(a[0]) == GL_ARRAY_BUFFER_BINDING) return store(a[1], static_cast<GLint>(context->array_buffer));
    if (name(a[0]) == GL_PIXEL_PACK_BUFFER_BINDING) return store(a[1], static_cast<GLint>(context->pack_buffer));
    if (name(a[0]) == GL_PIXEL_UNPACK_BUFFER_BINDING) return store(a[1], static_cast<GLint>(context->unpack_buffer));
    if (const i32* field = store_field(context, name(a[0]))) store(a[1], *field);
  }
  if (op == glGetBooleanv_op::op) {
    if (const i32* field = store_field(context, name(a[0]))) store(a[1], static_cast<u8>(*field != 0));
  }
}

// What a call writes: results, for all that is known of calls without a form of their own.
void write_memory(gl_context* context, const event& seen, const ops::row& row, arguments_of a) {
  if (row.op == glReadPixels_op::op) return write_pixels(*context, a);
  if (context->expects) return;
  for (u32 i = 0; i < row.count && shape_of(row.op).what == reads::some_bytes; ++i) {
    const ops::parameter& parameter = row.parameters[i];
    if (parameter.is_pointer && !parameter.is_const) store(a[i], written_by(seen));
  }
  write_figures(context, row.op, a);
}

}  // namespace

event receive(gl_context* context, int op, arguments_of a) {
  const ops::row& row = ops::of(op);
  event seen{.op = op, .values = empty_digest, .pointers = empty_digest, .memory = empty_digest};
  for (u32 i = 0; i < row.count; ++i) {
    const bool is_pointer = row.parameters[i].is_pointer;
    (is_pointer ? seen.pointers : seen.values) = add(is_pointer ? seen.pointers : seen.values, a[i]);
    seen.has_pointer |= is_pointer && a[i] != 0;
  }
  const int travels = row.threaded == ops::family::alias ? row.base : op;
  track(context, travels, a);
  read_memory(*context, &seen, row, a);
  write_memory(context, seen, row, a);
  return seen;
}

u64 answer_of(const event& seen) {
  return seen.values * 0x9E3779B97F4A7C15 + static_cast<u64>(seen.op);
}

u8 written_by(const event& seen) {
  return static_cast<u8>(answer_of(seen) >> 32 | 1);
}

bool writes_figures(int op) {
  return op == glReadPixels_op::op || op == glGetTexLevelParameteriv_op::op || op == glGetIntegerv_op::op ||
         op == glGetBooleanv_op::op;
}

int array_number(const gl_context& context, GLenum array) {
  switch (array) {
    case GL_VERTEX_ARRAY:
      return 0;
    case GL_COLOR_ARRAY:
      return 1;
    case GL_NORMAL_ARRAY:
      return 2;
    case GL_TEXTURE_COORD_ARRAY:
      return 3 + static_cast<int>(context.client_texture);
    case GL_FOG_COORD_ARRAY:
      return fog_array;
    case GL_SECONDARY_COLOR_ARRAY:
      return 12;
    case GL_INDEX_ARRAY:
      return 13;
    case GL_EDGE_FLAG_ARRAY:
      return 14;
    default:
      return -1;
  }
}

u32 list_bytes(GLenum type) {
  constexpr u32 bytes[] = {1, 1, 2, 2, 4, 4, 4, 2, 3, 4};
  return type >= GL_BYTE && type <= GL_4_BYTES ? bytes[type - GL_BYTE] : 0;
}

u32 component_bytes(GLenum type) {
  switch (type) {
    case GL_BYTE:
    case GL_UNSIGNED_BYTE:
      return 1;
    case GL_SHORT:
    case GL_UNSIGNED_SHORT:
    case GL_HALF_FLOAT:
      return 2;
    case GL_INT:
    case GL_UNSIGNED_INT:
    case GL_FLOAT:
      return 4;
    case GL_DOUBLE:
      return 8;
    default:
      return 0;
  }
}

u32 bytes_apart(const client_array& array) {
  return array.stride ? static_cast<u32>(array.stride) : static_cast<u32>(array.size) * component_bytes(array.type);
}

bool is_readable(const client_array& array) {
  return !array.buffered && array.pointer >= lowest_address && array.size >= 1 && array.size <= 4 &&
         component_bytes(array.type) && array.stride >= 0 && array.stride <= 4096;
}

u32 index_in_buffer(u64 offset) {
  return static_cast<u32>(offset * 7 % 16);
}

GLenum internal_format_of(GLenum target) {
  constexpr GLenum formats[] = {GL_RGBA8, GL_DEPTH_COMPONENT24, GL_STENCIL_INDEX, GL_DEPTH_COMPONENT32};
  return formats[target % 4];
}

image image_of(const call_shape& shape, const ops::row& row, const driver::argument_bits& arguments) {
  image named;
  i32* const sizes[] = {&named.width, &named.height, &named.depth};
  for (int i = 0; i < shape.dimensions; ++i)
    *sizes[i] = static_cast<i32>(arguments[shape.count_at + static_cast<u32>(i)]);
  named.dimensions = shape.dimensions;
  named.format = static_cast<GLenum>(arguments[row.count - 3]);
  named.type = static_cast<GLenum>(arguments[row.count - 2]);
  return named;
}

}  // namespace fuzz
