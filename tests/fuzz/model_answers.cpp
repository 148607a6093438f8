// What a context answers. Contexts can be told from each other by it: the application's own says other things than the
// parts, which agree but for what each counts by itself.
#include <algorithm>
#include <cstring>

#include "gl_model.h"

namespace fuzz {

namespace {

using arguments_of = const driver::argument_bits&;

GLenum name(u64 bits) {
  return static_cast<GLenum>(bits);
}

u64 hashed(u64 a, u64 b, u64 c) {
  return mixed(mixed(mixed(driver::empty_digest, a), b), c) * 0x9E3779B97F4A7C15 >> 32;
}

// ---- what is true of the state ----

GLuint name_of_bound(const gl_model& model, target which) {
  return model.bound[which] ? model.bound[which]->name : 0;
}

bool find_binding(const gl_model& model, GLenum pname, GLint* value) {
  struct binding {
    GLenum name;
    target which;
  };
  constexpr binding bindings[] = {
      {GL_ARRAY_BUFFER_BINDING, array_target},         {GL_PIXEL_PACK_BUFFER_BINDING, pack_target},
      {GL_PIXEL_UNPACK_BUFFER_BINDING, unpack_target}, {GL_DRAW_INDIRECT_BUFFER_BINDING, indirect_target},
      {GL_COPY_READ_BUFFER_BINDING, copy_read_target}, {GL_COPY_WRITE_BUFFER_BINDING, copy_write_target}};
  for (const binding& one : bindings) {
    if (one.name != pname) continue;
    *value = static_cast<GLint>(name_of_bound(model, one.which));
    return true;
  }
  if (pname != GL_ELEMENT_ARRAY_BUFFER_BINDING) return false;
  *value = static_cast<GLint>(model.vao->elements ? model.vao->elements->name : 0);
  return true;
}

struct store_name {
  GLenum pack, unpack;
  i32 pixel_store::*field;
};
constexpr store_name store_names[] = {{GL_PACK_SWAP_BYTES, GL_UNPACK_SWAP_BYTES, &pixel_store::swap_bytes},
                                      {GL_PACK_LSB_FIRST, GL_UNPACK_LSB_FIRST, &pixel_store::lsb_first},
                                      {GL_PACK_ROW_LENGTH, GL_UNPACK_ROW_LENGTH, &pixel_store::row_length},
                                      {GL_PACK_SKIP_ROWS, GL_UNPACK_SKIP_ROWS, &pixel_store::skip_rows},
                                      {GL_PACK_SKIP_PIXELS, GL_UNPACK_SKIP_PIXELS, &pixel_store::skip_pixels},
                                      {GL_PACK_ALIGNMENT, GL_UNPACK_ALIGNMENT, &pixel_store::alignment},
                                      {GL_PACK_IMAGE_HEIGHT, GL_UNPACK_IMAGE_HEIGHT, &pixel_store::image_height},
                                      {GL_PACK_SKIP_IMAGES, GL_UNPACK_SKIP_IMAGES, &pixel_store::skip_images}};

bool find_integer(const gl_model& model, GLenum pname, GLint* value) {
  for (const store_name& one : store_names) {
    if (one.pack == pname) return *value = model.pack.*one.field, true;
    if (one.unpack == pname) return *value = model.unpack.*one.field, true;
  }
  return find_binding(model, pname, value);
}

bool find_parameter(const buffer_object* buffer, GLenum pname, u64* value) {
  if (!buffer || (pname != GL_BUFFER_SIZE && pname != GL_BUFFER_MAPPED)) return false;
  *value = pname == GL_BUFFER_SIZE ? buffer->bytes.size() : buffer->is_mapped;
  return true;
}

u64 map_pointer(const buffer_object* buffer) {
  return buffer && buffer->is_mapped ? reinterpret_cast<u64>(buffer->bytes.data() + buffer->map_offset) : 0;
}

// ---- replies ----

template <class T>
reply written(u64 at, T value) {
  reply made{.at = at};
  const auto* bytes = reinterpret_cast<const u8*>(&value);
  made.bytes.assign(bytes, bytes + sizeof value);
  return made;
}

reply contents(const gl_model& model, const buffer_object* buffer, u64 offset, u64 size, u64 at) {
  if (!buffer || !model.has_contents || buffer->is_mapped) return {};
  if (offset > buffer->bytes.size() || size > buffer->bytes.size() - offset) return {};
  reply made{.at = at};
  const auto first = buffer->bytes.begin() + static_cast<std::ptrdiff_t>(offset);
  made.bytes.assign(first, first + static_cast<std::ptrdiff_t>(size));
  return made;
}

reply integer(const gl_model& model, GLenum pname, u64 at, bool is_boolean) {
  GLint value = 0;
  if (!find_integer(model, pname, &value)) return {};
  return is_boolean ? written(at, static_cast<u8>(value != 0)) : written(at, value);
}

reply transfer(const gl_model& model, GLenum pname, u64 at) {
  const float plain = plain_transfer(pname);
  const auto changed = model.transfers.find(pname);
  if (plain < 0) return {};
  return written(at, changed == model.transfers.end() ? plain : changed->second);
}

reply parameter(const buffer_object* buffer, GLenum pname, u64 at, bool is_long) {
  u64 value = 0;
  if (!find_parameter(buffer, pname, &value)) return {};
  return is_long ? written(at, static_cast<GLint64>(value)) : written(at, static_cast<GLint>(value));
}

GLenum format_of_texture(GLenum target) {
  return internal_format_of(target);
}

bool is_enabled(const gl_model& model, GLenum cap) {
  gl_context names;
  names.client_texture = model.client_texture;
  const int array = array_number(names, cap);
  return array >= 0 && model.vao->fixed[array].enabled;
}

reply answer_buffers(const gl_model& model, int op, arguments_of a, bool* known) {
  *known = true;
  switch (op) {
    case glGetBufferParameteriv_op::op:
      return parameter(bound_buffer(model, name(a[0])), name(a[1]), a[2], false);
    case glGetBufferParameteri64v_op::op:
      return parameter(bound_buffer(model, name(a[0])), name(a[1]), a[2], true);
    case glGetNamedBufferParameteriv_op::op:
      return parameter(named_buffer(model, name(a[0])), name(a[1]), a[2], false);
    case glGetNamedBufferParameteri64v_op::op:
      return parameter(named_buffer(model, name(a[0])), name(a[1]), a[2], true);
    case glGetBufferPointerv_op::op:
      return name(a[1]) == GL_BUFFER_MAP_POINTER ? written(a[2], map_pointer(bound_buffer(model, name(a[0]))))
                                                 : reply{};
    case glGetNamedBufferPointerv_op::op:
      return name(a[1]) == GL_BUFFER_MAP_POINTER ? written(a[2], map_pointer(named_buffer(model, name(a[0]))))
                                                 : reply{};
    case glGetBufferSubData_op::op:
      return contents(model, bound_buffer(model, name(a[0])), a[1], a[2], a[3]);
    case glGetNamedBufferSubData_op::op:
      return contents(model, named_buffer(model, name(a[0])), a[1], a[2], a[3]);
    default:
      *known = false;
      return {};
  }
}

template <class T>
reply query_reply(const gl_model& model, arguments_of a) {
  return written(a[2], static_cast<T>(query_answer(model.number, name(a[0]), name(a[1]))));
}

reply answer_queries(const gl_model& model, int op, arguments_of a, bool* known) {
  *known = true;
  switch (op) {
    case glGetQueryObjectiv_op::op:
    case glGetQueryObjectivARB_op::op:
    case glGetQueryObjectuiv_op::op:
    case glGetQueryObjectuivARB_op::op:
    case glGetQueryObjectuivEXT_op::op:
      return query_reply<GLuint>(model, a);
    case glGetQueryObjecti64v_op::op:
    case glGetQueryObjecti64vEXT_op::op:
    case glGetQueryObjectui64v_op::op:
    case glGetQueryObjectui64vEXT_op::op:
      return query_reply<GLuint64>(model, a);
    case glIsQuery_op::op:
      return {.result = model.queries.contains(name(a[0]))};
    case glGetGraphicsResetStatus_op::op:
      return {.result = reset_answer(model.number)};
    default:
      *known = false;
      return {};
  }
}

reply answer_state(const gl_model& model, int op, arguments_of a, bool* known) {
  *known = true;
  switch (op) {
    case glGetIntegerv_op::op:
      return integer(model, name(a[0]), a[1], false);
    case glGetBooleanv_op::op:
      return integer(model, name(a[0]), a[1], true);
    case glGetFloatv_op::op:
      return transfer(model, name(a[0]), a[1]);
    case glGetTexLevelParameteriv_op::op:
      if (name(a[2]) != GL_TEXTURE_INTERNAL_FORMAT) return {};
      return written(a[3], static_cast<GLint>(format_of_texture(name(a[0]))));
    case glIsEnabled_op::op:
      return {.result = is_enabled(model, name(a[0]))};
    case glIsShader_op::op:  // the streams make no other names
      return {.result = 1};
    case glGetString_op::op:
    case glGetStringi_op::op:
      return {};
    default:
      *known = false;
      return {};
  }
}

// Names go where the call says, or are its result.
reply names_reply(const gl_model& model, const ops::row& row, arguments_of a) {
  if (row.result_size) return {.result = model.next_name - 1};
  const auto count = static_cast<i32>(a[row.count - 2]);
  if (count < 1 || !a[row.count - 1]) return {};
  reply made{.at = a[row.count - 1]};
  made.bytes.resize(static_cast<std::size_t>(count) * sizeof(GLuint));
  for (u32 i = 0; i < static_cast<u32>(count); ++i) {
    const GLuint one = model.next_name - static_cast<u32>(count) + i;
    std::memcpy(made.bytes.data() + i * sizeof one, &one, sizeof one);
  }
  return made;
}

// A result, and a byte behind the last pointer that something is written to.
reply any_reply(const gl_model& model, const ops::row& row, arguments_of a, const effect& reached) {
  const u64 said = hashed(reached.values, static_cast<u64>(reached.op), model.number < 0 ? 1 : 2);
  reply made{.result = row.result_size ? said | said << 32 : 0};
  const bool writes = shape_of(row.op).what == reads::some_bytes;
  for (u32 i = 0; i < row.count && writes; ++i) {
    const ops::parameter& parameter = row.parameters[i];
    if (!parameter.is_pointer || parameter.is_const || a[i] < lowest_address) continue;
    made.at = a[i];
    made.bytes = {static_cast<u8>(said >> 8 | 1)};
  }
  return made;
}

// Reads of whole textures have a shape of their own; into a pack buffer they leave the memory as it is.
bool reads_texture(int op) {
  constexpr int reading[] = {glGetTexImage_op::op,        glGetCompressedTexImage_op::op,
                             glGetTextureImage_op::op,    glGetCompressedTextureImage_op::op,
                             glGetTextureSubImage_op::op, glGetCompressedTextureSubImage_op::op,
                             glGetnTexImage_op::op,       glGetnCompressedTexImage_op::op};
  return std::ranges::find(reading, op) != std::end(reading);
}

reply texture_reply(const gl_model& model, const ops::row& row, arguments_of a, const effect& reached) {
  if (model.bound[pack_target] || a[row.count - 1] < lowest_address) return {};
  const u64 said = hashed(reached.values, static_cast<u64>(reached.op), model.number < 0 ? 1 : 2);
  return written(a[row.count - 1], said);
}

}  // namespace

reply reply_of(const gl_model& model, int op, arguments_of a, const effect& reached) {
  const ops::row& row = ops::of(function_of(op));
  bool known = false;
  reply made = answer_buffers(model, row.op, a, &known);
  if (!known) made = answer_queries(model, row.op, a, &known);
  if (!known) made = answer_state(model, row.op, a, &known);
  if (known) return made;
  if (makes_names(row.op)) return names_reply(model, row, a);
  if (reads_texture(row.op)) return texture_reply(model, row, a, reached);
  return any_reply(model, row, a, reached);
}

// ---- fences ----

bool is_fence_call(int op) {
  return op == glFenceSync_op::op || op == glDeleteSync_op::op || op == glClientWaitSync_op::op ||
         op == glWaitSync_op::op;
}

effect reach_fence(gl_model* model, int op, arguments_of a) {
  effect reached{.op = op, .values = mixed(driver::empty_digest, a[1]), .state = model->state_digest};
  if (op == glFenceSync_op::op) {
    if (name(a[0]) != GL_SYNC_GPU_COMMANDS_COMPLETE || a[1]) return {};
    reached.memory = model->next_sync;
    // The expectation learns of the application's handle when the call is back.
    const u64 own = model->expects ? 0 : fence_handle(model->number, model->next_sync);
    model->syncs[own] = model->next_sync++;
    return reached;
  }
  const auto found = model->syncs.find(a[0]);
  if (found == model->syncs.end() || !a[0]) return {};
  reached.memory = found->second;
  if (op == glWaitSync_op::op) reached.values = mixed(reached.values, a[2]);
  if (op == glDeleteSync_op::op) {
    reached.values = 0;
    model->syncs.erase(found);
  }
  return reached;
}

u64 fence_handle(int number, u64 fence) {
  return static_cast<u64>(number + 2) << 16 | fence << 24;
}

GLenum wait_answer(int part, u64 fence) {
  constexpr GLenum answers[] = {GL_ALREADY_SIGNALED,    GL_ALREADY_SIGNALED, GL_ALREADY_SIGNALED,
                                GL_CONDITION_SATISFIED, GL_TIMEOUT_EXPIRED,  GL_ALREADY_SIGNALED,
                                GL_CONDITION_SATISFIED, GL_WAIT_FAILED};
  return part < 0 ? GL_ALREADY_SIGNALED : answers[hashed(static_cast<u64>(part), fence, 3) % 8];
}

GLint sync_status(int part, u64 fence) {
  return part >= 0 && hashed(static_cast<u64>(part), fence, 5) % 4 == 0 ? GL_UNSIGNALED : GL_SIGNALED;
}

// ---- queries ----

bool is_query_call(int op) {
  constexpr int calls[] = {glBeginQuery_op::op,        glBeginQueryARB_op::op,   glBeginQueryEXT_op::op,
                           glEndQuery_op::op,          glEndQueryARB_op::op,     glEndQueryEXT_op::op,
                           glBeginQueryIndexed_op::op, glEndQueryIndexed_op::op, glQueryCounter_op::op};
  return std::ranges::find(calls, op) != std::end(calls);
}

void change_queries(gl_model* model, int op, arguments_of a) {
  if (op == glBeginQuery_op::op || op == glBeginQueryARB_op::op || op == glBeginQueryEXT_op::op) {
    model->queries.insert(name(a[1]));
  }
  if (op == glBeginQueryIndexed_op::op) model->queries.insert(name(a[2]));
  if (op == glQueryCounter_op::op) model->queries.insert(name(a[0]));
}

u64 query_answer(int number, GLuint id, GLenum pname) {
  const u64 part = static_cast<u64>(number + 2);
  if (pname == GL_QUERY_RESULT_AVAILABLE) return hashed(part, id, 7) % 8 != 0;
  return hashed(part, id, 11) % 3 == 0 ? 0 : hashed(part, id, 13) % 1000000;
}

GLenum reset_answer(int number) {
  constexpr GLenum answers[] = {GL_NO_ERROR, GL_INNOCENT_CONTEXT_RESET, GL_UNKNOWN_CONTEXT_RESET, GL_NO_ERROR};
  return answers[(number + 5) % 4];
}

// ---- pixels ----

u8 pixel_at(i32 x, i32 y, u64 byte) {
  const u64 place = static_cast<u64>(x + 5000) * 8191 + static_cast<u64>(y + 5000) * 131071 + byte * 31;
  return static_cast<u8>(place * 0x9E3779B97F4A7C15 >> 56);
}

void write_pixels(gl_model* model, arguments_of a, u8* pixels) {
  const image of{
      .width = static_cast<i32>(a[2]), .height = static_cast<i32>(a[3]), .format = name(a[4]), .type = name(a[5])};
  const image_layout layout = lay_out(of, model->pack);
  if (!layout.sizable || layout.pixel == 0) return;
  if (buffer_object* pack = model->bound[pack_target].get()) {
    if (!model->has_contents || a[6] > pack->bytes.size() || layout.end > pack->bytes.size() - a[6]) return;
    pixels = pack->bytes.data() + a[6];
  }
  const bool is_window = !model->read_framebuffer;
  const i32 left = static_cast<i32>(a[0]) + (is_window ? model->origin_x : 0);
  const i32 bottom = static_cast<i32>(a[1]) + (is_window ? model->origin_y : 0);
  for (i32 y = 0; y < of.height; ++y) {
    u8* row = pixels + layout.first + static_cast<u64>(y) * layout.row;
    for (u64 byte = 0; byte < layout.row_bytes; ++byte) {
      row[byte] = pixel_at(left + static_cast<i32>(byte / layout.pixel), bottom + y, byte % layout.pixel);
    }
  }
}

}  // namespace fuzz
