// What draws fetch, by GL's rules: commands, indices and vertices, from buffers or from memory.
#include <cstring>
#include <iterator>
#include <string>

#include "gl_model.h"

namespace fuzz {

namespace {

using arguments_of = const driver::argument_bits&;

constexpr u64 most_draws = 64;
constexpr u64 most_vertices = 1 << 16;

i32 number(u64 bits) {
  return static_cast<i32>(bits);
}

u64 count_of(u64 bits) {
  return number(bits) > 0 ? static_cast<u64>(number(bits)) : 0;
}

// Where `size` bytes lie: in a buffer at an offset, or in memory. Null where nothing can be read.
const u8* find_bytes(const gl_model& model, const buffer_object* buffer, u64 at, u64 size) {
  if (!buffer) return at >= lowest_address ? reinterpret_cast<const u8*>(at) : nullptr;
  if (!model.has_contents || at > buffer->bytes.size() || size > buffer->bytes.size() - at) return nullptr;
  return buffer->bytes.data() + at;
}

u64 fetch_bytes(const gl_model& model, u64 digest, const buffer_object* buffer, u64 at, u64 size) {
  const u8* bytes = find_bytes(model, buffer, at, size);
  return bytes ? mixed_bytes(digest, bytes, size) : mixed(digest, 1);
}

// ---- which draws a call makes ----

template <class T>
T value_at(const gl_model& model, const buffer_object* buffer, u64 at, T missing) {
  T value = missing;
  if (const u8* bytes = find_bytes(model, buffer, at, sizeof value)) std::memcpy(&value, bytes, sizeof value);
  return value;
}

sub_draw array_draw(u64 first, u64 count, u64 instances, u64 base_instance) {
  return {.first = static_cast<u64>(std::int64_t{number(first)}),
          .count = number(first) < 0 ? 0 : count_of(count),
          .instances = count_of(instances),
          .base_instance = static_cast<u32>(base_instance)};
}

sub_draw element_draw(arguments_of a, u32 count_at) {
  return {.indexed = true,
          .count = count_of(a[count_at]),
          .type = static_cast<GLenum>(a[count_at + 1]),
          .indices = a[count_at + 2]};
}

sub_draw element_draw(arguments_of a, u32 count_at, u64 instances, u64 base, u64 base_instance) {
  sub_draw made = element_draw(a, count_at);
  made.instances = count_of(instances);
  made.base = number(base);
  made.base_instance = static_cast<u32>(base_instance);
  return made;
}

sub_draw indirect_draw(const gl_model& model, bool indexed, u64 type, u64 at) {
  const buffer_object* buffer = model.bound[indirect_target].get();
  const auto word = [&](u64 i) { return u64{value_at<u32>(model, buffer, at + 4 * i, 0)}; };
  if (!indexed) return array_draw(word(2), word(0), word(1), word(3));
  sub_draw made{.indexed = true, .count = count_of(word(0)), .type = static_cast<GLenum>(type)};
  made.indices = word(2) * bytes_of_index(made.type);
  made.instances = count_of(word(1));
  made.base = number(word(3));
  made.base_instance = static_cast<u32>(word(4));
  return made;
}

std::vector<sub_draw> indirect_draws(const gl_model& model, bool indexed, u64 type, u64 at, u64 count, i32 stride) {
  std::vector<sub_draw> made;
  const u64 step = stride ? static_cast<u64>(stride) : indexed ? 20 : 16;
  for (u64 i = 0; i < count && i < most_draws; ++i) made.push_back(indirect_draw(model, indexed, type, at + i * step));
  return made;
}

u64 counted(const gl_model& model, u64 at, u64 most) {
  const u64 count = value_at<u32>(model, model.bound[parameter_target].get(), at, 0);
  return model.bound[parameter_target] ? std::min(count, count_of(most)) : 0;
}

template <class T>
T item(u64 address, u64 i) {
  T value;
  std::memcpy(&value, reinterpret_cast<const u8*>(address) + i * sizeof value, sizeof value);
  return value;
}

std::vector<sub_draw> several_draws(int op, arguments_of a) {
  std::vector<sub_draw> made;
  const bool indexed = op != glMultiDrawArrays_op::op;
  const u64 count = count_of(a[indexed ? 4 : 3]);
  for (u64 i = 0; i < count; ++i) {
    if (!indexed) {
      made.push_back(array_draw(static_cast<u64>(item<GLint>(a[1], i)), static_cast<u64>(item<GLint>(a[2], i)), 1, 0));
      continue;
    }
    sub_draw one{.indexed = true,
                 .count = count_of(static_cast<u64>(item<GLint>(a[1], i))),
                 .type = static_cast<GLenum>(a[2]),
                 .indices = item<u64>(a[3], i)};
    if (op == glMultiDrawElementsBaseVertex_op::op) one.base = item<GLint>(a[5], i);
    made.push_back(one);
  }
  return made;
}

// ---- fetching ----

u64 fetch_attribute(const gl_model& model, u64 digest, const attribute& attrib, u64 vertex, u64 instance, u32 base) {
  const vertex_binding& from = model.vao->bindings[attrib.binding];
  const u64 step = from.divisor ? base + instance / from.divisor : vertex;
  const u64 at = from.offset + attrib.relative + step * static_cast<u64>(from.stride);
  return fetch_bytes(model, digest, from.buffer.get(), at, bytes_of_element(attrib.format));
}

u64 fetch_fixed(const gl_model& model, u64 digest, const fixed_array& array, u64 vertex) {
  const u64 at = array.pointer + vertex * stride_of(array);
  return fetch_bytes(model, digest, array.buffer.get(), at, bytes_of_element(array.format));
}

u64 fetch_vertex(const gl_model& model, u64 digest, u64 vertex, u64 instance, u32 base_instance) {
  for (const fixed_array& array : model.vao->fixed) {
    if (array.enabled) digest = fetch_fixed(model, digest, array, vertex);
  }
  for (u32 i = 0; i < attributes; ++i) {
    const attribute& attrib = model.vao->attribs[i];
    if (!attrib.enabled) continue;
    digest = mixed(digest, static_cast<u64>(attrib.format.kind) << 8 | attrib.format.normalized);
    digest = fetch_attribute(model, digest, attrib, vertex, instance, base_instance);
  }
  return digest;
}

u64 vertex_of(const gl_model& model, const sub_draw& draw, u64 i) {
  if (!draw.indexed) return draw.first + i;
  const u32 size = bytes_of_index(draw.type);
  u32 index = 0;
  const u8* bytes = find_bytes(model, model.vao->elements.get(), draw.indices + i * size, size);
  if (!bytes) return ~u64{0};
  std::memcpy(&index, bytes, size);
  return static_cast<u64>(std::int64_t{index} + draw.base);
}

u64 fetch_draw(const gl_model& model, u64 digest, const sub_draw& draw) {
  digest = mixed(digest, draw.count);
  if (draw.indexed && !bytes_of_index(draw.type)) return digest;
  const u64 instances = std::min<u64>(draw.instances, 4);
  for (u64 instance = 0; instance < instances; ++instance) {
    for (u64 i = 0; i < draw.count && i < most_vertices; ++i) {
      const u64 vertex = vertex_of(model, draw, i);
      if (vertex == ~u64{0}) continue;
      digest = fetch_vertex(model, mixed(digest, vertex), vertex, instance, draw.base_instance);
    }
  }
  return digest;
}

// ---- one element ----

const char* suffix_of(GLenum type) {
  constexpr const char* suffixes[] = {"b", "ub", "s", "us", "i", "ui", "f", nullptr, nullptr, nullptr, "d"};
  return type >= GL_BYTE && type <= GL_DOUBLE ? suffixes[type - GL_BYTE] : nullptr;
}

int number_of(const std::string& name) {
  static const std::map<std::string, int> numbers = [] {
    std::map<std::string, int> all;
    for (const ops::row& row : ops::every()) all[row.name] = row.op;
    return all;
  }();
  const auto found = numbers.find(name);
  return found == numbers.end() ? -1 : found->second;
}

int call_of_fixed(const fixed_array& array, u32 number) {
  if (number == 14) return glEdgeFlagv_op::op;
  const char* suffix = suffix_of(array.format.type);
  if (!suffix) return -1;
  const std::string size = std::to_string(array.format.size);
  const std::string end = std::string(suffix) + "v";
  if (number == 0) return number_of("glVertex" + size + end);
  if (number == 1) return number_of("glColor" + size + end);
  if (number == 2) return number_of("glNormal3" + end);
  if (number < fog_array) return number_of("glMultiTexCoord" + size + end);
  if (number == fog_array) return number_of("glFogCoord" + end);
  return number_of((number == 12 ? "glSecondaryColor3" : "glIndex") + end);
}

int call_of_attribute(const array_format& format) {
  const char* suffix = suffix_of(format.type);
  const std::string size = std::to_string(format.size);
  if (!suffix || format.kind == value_kind::doubles) return -1;
  if (format.kind == value_kind::integers) return number_of("glVertexAttribI" + size + suffix + "v");
  return number_of("glVertexAttrib" + size + (format.normalized ? "N" : "") + suffix + "v");
}

void add_immediate(const gl_model& model, std::vector<effect>* calls, int op, u64 slot, u64 address) {
  gl_model alone = fresh_model(model.number, true, true);
  driver::argument_bits arguments = {address};
  if (op >= 0 && ops::of(op).count == 2) arguments = {slot, address};
  calls->push_back(op < 0 ? effect{} : reach(&alone, op, arguments));
  calls->back().state = model.state_digest;
}

}  // namespace

u32 bytes_of_index(GLenum type) {
  return type == GL_UNSIGNED_BYTE ? 1 : type == GL_UNSIGNED_SHORT ? 2 : type == GL_UNSIGNED_INT ? 4 : 0;
}

std::vector<sub_draw> draws_of(const gl_model& model, int op, arguments_of a) {
  switch (op) {
    case glDrawArrays_op::op:
    case glDrawArraysEXT_op::op:
      return {array_draw(a[1], a[2], 1, 0)};
    case glDrawArraysInstanced_op::op:
      return {array_draw(a[1], a[2], a[3], 0)};
    case glDrawArraysInstancedBaseInstance_op::op:
      return {array_draw(a[1], a[2], a[3], a[4])};
    case glDrawElements_op::op:
      return {element_draw(a, 1)};
    case glDrawRangeElements_op::op:
      return {element_draw(a, 3)};
    case glDrawElementsBaseVertex_op::op:
      return {element_draw(a, 1, 1, a[4], 0)};
    case glDrawRangeElementsBaseVertex_op::op:
      return {element_draw(a, 3, 1, a[6], 0)};
    case glDrawElementsInstanced_op::op:
      return {element_draw(a, 1, a[4], 0, 0)};
    case glDrawElementsInstancedBaseVertex_op::op:
      return {element_draw(a, 1, a[4], a[5], 0)};
    case glDrawElementsInstancedBaseInstance_op::op:
      return {element_draw(a, 1, a[4], 0, a[5])};
    case glDrawElementsInstancedBaseVertexBaseInstance_op::op:
      return {element_draw(a, 1, a[4], a[5], a[6])};
    case glMultiDrawArrays_op::op:
    case glMultiDrawElements_op::op:
    case glMultiDrawElementsBaseVertex_op::op:
      return several_draws(op, a);
    case glDrawArraysIndirect_op::op:
      return indirect_draws(model, false, 0, a[1], 1, 0);
    case glDrawElementsIndirect_op::op:
      return indirect_draws(model, true, a[1], a[2], 1, 0);
    case glMultiDrawArraysIndirect_op::op:
      return indirect_draws(model, false, 0, a[1], count_of(a[2]), number(a[3]));
    case glMultiDrawElementsIndirect_op::op:
      return indirect_draws(model, true, a[1], a[2], count_of(a[3]), number(a[4]));
    case glMultiDrawArraysIndirectCount_op::op:
      return indirect_draws(model, false, 0, a[1], counted(model, a[2], a[3]), number(a[4]));
    case glMultiDrawElementsIndirectCount_op::op:
      return indirect_draws(model, true, a[1], a[2], counted(model, a[3], a[4]), number(a[5]));
    case glArrayElement_op::op:
    case glArrayElementEXT_op::op:
      return {array_draw(a[0], 1, 1, 0)};
    default:
      return {};
  }
}

bool is_draw(int op) {
  constexpr int draws[] = {glDrawArrays_op::op,
                           glDrawArraysEXT_op::op,
                           glDrawArraysInstanced_op::op,
                           glDrawArraysInstancedBaseInstance_op::op,
                           glDrawElements_op::op,
                           glDrawRangeElements_op::op,
                           glDrawElementsBaseVertex_op::op,
                           glDrawRangeElementsBaseVertex_op::op,
                           glDrawElementsInstanced_op::op,
                           glDrawElementsInstancedBaseVertex_op::op,
                           glDrawElementsInstancedBaseInstance_op::op,
                           glDrawElementsInstancedBaseVertexBaseInstance_op::op,
                           glMultiDrawArrays_op::op,
                           glMultiDrawElements_op::op,
                           glMultiDrawElementsBaseVertex_op::op,
                           glDrawArraysIndirect_op::op,
                           glDrawElementsIndirect_op::op,
                           glMultiDrawArraysIndirect_op::op,
                           glMultiDrawElementsIndirect_op::op,
                           glMultiDrawArraysIndirectCount_op::op,
                           glMultiDrawElementsIndirectCount_op::op,
                           glArrayElement_op::op,
                           glArrayElementEXT_op::op};
  for (const int draw : draws) {
    if (draw == op) return true;
  }
  return false;
}

u64 fetch(const gl_model& model, int op, arguments_of a) {
  u64 digest = driver::empty_digest;
  for (const sub_draw& draw : draws_of(model, op, a)) digest = fetch_draw(model, digest, draw);
  return digest;
}

// An attribute 0 that is enabled makes the vertex, and the vertex array nothing.
std::vector<effect> immediate_calls(const gl_model& model, i32 element) {
  std::vector<effect> calls;
  const auto at = static_cast<u64>(element);
  const vertex_array_object& object = *model.vao;
  const bool has_position = object.attribs[0].enabled;
  const auto add_attribute = [&](u32 i) {
    const attribute& attrib = object.attribs[i];
    const vertex_binding& from = object.bindings[attrib.binding];
    const u64 address = from.offset + attrib.relative + at * static_cast<u64>(from.stride);
    add_immediate(model, &calls, from.buffer ? -1 : call_of_attribute(attrib.format), i, address);
  };
  const auto add_fixed = [&](u32 i) {
    const fixed_array& array = object.fixed[i];
    add_immediate(model, &calls, array.buffer ? -1 : call_of_fixed(array, i), GL_TEXTURE0 + i - 3,
                  array.pointer + at * stride_of(array));
  };
  for (u32 i = 1; i < fixed_arrays; ++i) {
    if (object.fixed[i].enabled) add_fixed(i);
  }
  for (u32 i = 1; i < attributes; ++i) {
    if (object.attribs[i].enabled) add_attribute(i);
  }
  if (has_position) add_attribute(0);
  if (!has_position && object.fixed[0].enabled) add_fixed(0);
  return calls;
}

}  // namespace fuzz
