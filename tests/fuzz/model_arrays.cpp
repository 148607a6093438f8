// Array objects as GL has them, and the client state that is put aside with them.
#include <algorithm>

#include "gl_model.h"

namespace fuzz {

namespace {

using arguments_of = const driver::argument_bits&;

GLenum name(u64 bits) {
  return static_cast<GLenum>(bits);
}

i32 number(u64 bits) {
  return static_cast<i32>(bits);
}

vertex_array_object* named_vao(const gl_model& model, GLuint name) {
  const auto found = model.vaos.find(name);
  return found == model.vaos.end() ? nullptr : found->second.get();
}

buffer_pointer buffer_named(const gl_model& model, GLuint name) {
  const auto found = model.buffers.find(name);
  return found == model.buffers.end() ? nullptr : found->second;
}

// ---- pointer calls ----

// A pointer to memory is for the first object alone.
bool is_refused(const gl_model& model, i32 stride, u64 pointer) {
  return stride < 0 || (model.vao->name && !model.bound[array_target] && pointer);
}

void point_attribute(gl_model* model, u64 index, const array_format& format, i32 stride, u64 pointer) {
  if (index >= attributes || is_refused(*model, stride, pointer)) return;
  if (bytes_of_element(format) == 0) return;
  attribute* attrib = &model->vao->attribs[index];
  attrib->format = format;
  attrib->relative = 0;
  attrib->binding = static_cast<u32>(index);
  vertex_binding* binding = &model->vao->bindings[index];
  binding->buffer = model->bound[array_target];
  binding->offset = pointer;
  binding->stride = stride ? stride : static_cast<i32>(bytes_of_element(format));
}

void point_fixed(gl_model* model, int array, const array_format& format, i32 stride, u64 pointer) {
  if (array < 0 || is_refused(*model, stride, pointer)) return;
  fixed_array* set = &model->vao->fixed[array];
  set->format = format;
  set->stride = stride;
  set->pointer = pointer;
  set->buffer = model->bound[array_target];
}

int number_of_fixed(const gl_model& model, GLenum array) {
  gl_context names;
  names.client_texture = model.client_texture;
  return array_number(names, array);
}

// The older names say how many elements there are, before the pointer.
bool point_by_client_call(gl_model* model, int op, arguments_of a) {
  const auto sized = [&](GLenum array, u32 pointer) {
    point_fixed(model, number_of_fixed(*model, array), {number(a[0]), name(a[1])}, number(a[2]), a[pointer]);
    return true;
  };
  const auto typed = [&](GLenum array, i32 size, u32 pointer) {
    point_fixed(model, number_of_fixed(*model, array), {size, name(a[0])}, number(a[1]), a[pointer]);
    return true;
  };
  const auto flags = [&](u32 pointer) {
    point_fixed(model, 14, {1, GL_UNSIGNED_BYTE}, number(a[0]), a[pointer]);
    return true;
  };
  switch (op) {
    case glVertexPointer_op::op:
      return sized(GL_VERTEX_ARRAY, 3);
    case glVertexPointerEXT_op::op:
      return sized(GL_VERTEX_ARRAY, 4);
    case glColorPointer_op::op:
      return sized(GL_COLOR_ARRAY, 3);
    case glColorPointerEXT_op::op:
      return sized(GL_COLOR_ARRAY, 4);
    case glTexCoordPointer_op::op:
      return sized(GL_TEXTURE_COORD_ARRAY, 3);
    case glTexCoordPointerEXT_op::op:
      return sized(GL_TEXTURE_COORD_ARRAY, 4);
    case glSecondaryColorPointer_op::op:
      return sized(GL_SECONDARY_COLOR_ARRAY, 3);
    case glNormalPointer_op::op:
      return typed(GL_NORMAL_ARRAY, 3, 2);
    case glNormalPointerEXT_op::op:
      return typed(GL_NORMAL_ARRAY, 3, 3);
    case glIndexPointer_op::op:
      return typed(GL_INDEX_ARRAY, 1, 2);
    case glIndexPointerEXT_op::op:
      return typed(GL_INDEX_ARRAY, 1, 3);
    case glFogCoordPointer_op::op:
      return typed(GL_FOG_COORD_ARRAY, 1, 2);
    case glEdgeFlagPointer_op::op:
      return flags(1);
    case glEdgeFlagPointerEXT_op::op:
      return flags(2);
    default:
      return false;
  }
}

bool point_by_attribute_call(gl_model* model, int op, arguments_of a) {
  switch (op) {
    case glVertexAttribPointer_op::op:
      point_attribute(model, a[0], {number(a[1]), name(a[2]), static_cast<u8>(a[3] != 0)}, number(a[4]), a[5]);
      return true;
    case glVertexAttribIPointer_op::op:
      point_attribute(model, a[0], {number(a[1]), name(a[2]), 0, value_kind::integers}, number(a[3]), a[4]);
      return true;
    case glVertexAttribLPointer_op::op:
      point_attribute(model, a[0], {number(a[1]), name(a[2]), 0, value_kind::doubles}, number(a[3]), a[4]);
      return true;
    default:
      return false;
  }
}

// ---- interleaved arrays ----

struct interleaved {
  i32 tex_coords, colors;
  GLenum color_type;
  i32 normals, vertices;
};

// In the order of the formats' numbers.
constexpr interleaved layouts[] = {
    {0, 0, GL_FLOAT, 0, 2},         {0, 0, GL_FLOAT, 0, 3}, {0, 4, GL_UNSIGNED_BYTE, 0, 2},
    {0, 4, GL_UNSIGNED_BYTE, 0, 3}, {0, 3, GL_FLOAT, 0, 3}, {0, 0, GL_FLOAT, 3, 3},
    {0, 4, GL_FLOAT, 3, 3},         {2, 0, GL_FLOAT, 0, 3}, {4, 0, GL_FLOAT, 0, 4},
    {2, 4, GL_UNSIGNED_BYTE, 0, 3}, {2, 3, GL_FLOAT, 0, 3}, {2, 0, GL_FLOAT, 3, 3},
    {2, 4, GL_FLOAT, 3, 3},         {4, 4, GL_FLOAT, 3, 4}};

u64 set_interleaved(gl_model* model, GLenum array, const array_format& format, i32 stride, u64 at) {
  const int which = number_of_fixed(*model, array);
  if (which >= 0) model->vao->fixed[which].enabled = format.size != 0;
  if (!format.size) return at;
  point_fixed(model, which, format, stride, at);
  return at + bytes_of_element(format);
}

void interleave(gl_model* model, GLenum format, i32 stride, u64 pointer) {
  if (format < GL_V2F || format > GL_T4F_C4F_N3F_V4F || is_refused(*model, stride, pointer)) return;
  const interleaved& layout = layouts[format - GL_V2F];
  const u32 color_bytes = static_cast<u32>(layout.colors) * component_bytes(layout.color_type);
  const i32 packed = (layout.tex_coords + layout.normals + layout.vertices) * 4 + static_cast<i32>(color_bytes);
  const i32 step = stride ? stride : packed;
  for (const u32 off : {fog_array, 12u, 13u, 14u}) model->vao->fixed[off].enabled = false;
  u64 at = set_interleaved(model, GL_TEXTURE_COORD_ARRAY, {layout.tex_coords}, step, pointer);
  at = set_interleaved(model, GL_COLOR_ARRAY, {layout.colors, layout.color_type}, step, at);
  at = set_interleaved(model, GL_NORMAL_ARRAY, {layout.normals}, step, at);
  set_interleaved(model, GL_VERTEX_ARRAY, {layout.vertices}, step, at);
}

// ---- what stands behind attributes ----

void set_vertex_buffer(const gl_model& model, vertex_array_object* object, u64 at, u64 buffer, u64 offset, i32 stride) {
  if (!object || at >= attributes || stride < 0) return;
  object->bindings[at].buffer = buffer_named(model, name(buffer));
  object->bindings[at].offset = offset;
  object->bindings[at].stride = stride;
}

void set_vertex_buffers(const gl_model& model, vertex_array_object* object, u64 first, arguments_of a, u32 names) {
  const i32 count = number(a[names - 1]);
  const auto* buffers = reinterpret_cast<const GLuint*>(a[names]);
  const auto* offsets = reinterpret_cast<const std::int64_t*>(a[names + 1]);
  const auto* strides = reinterpret_cast<const i32*>(a[names + 2]);
  for (i32 i = 0; i < count; ++i) {
    const u64 at = first + static_cast<u64>(i);
    if (buffers) {
      set_vertex_buffer(model, object, at, buffers[i], static_cast<u64>(offsets[i]), strides[i]);
    } else {
      set_vertex_buffer(model, object, at, 0, 0, 16);
    }
  }
}

void set_format(vertex_array_object* object, u64 index, const array_format& format, u64 relative) {
  if (!object || index >= attributes || bytes_of_element(format) == 0) return;
  object->attribs[index].format = format;
  object->attribs[index].relative = name(relative);
}

void set_binding(vertex_array_object* object, u64 index, u64 binding) {
  if (object && index < attributes && binding < attributes) object->attribs[index].binding = name(binding);
}

void set_divisor(vertex_array_object* object, u64 binding, u64 divisor) {
  if (object && binding < attributes) object->bindings[binding].divisor = name(divisor);
}

void enable_attribute(vertex_array_object* object, u64 index, bool on) {
  if (object && index < attributes) object->attribs[index].enabled = on;
}

// `from` is the argument behind the object's name.
bool change_object(gl_model* model, vertex_array_object* object, int op, arguments_of a, u32 from) {
  switch (op) {
    case glBindVertexBuffer_op::op:
    case glVertexArrayVertexBuffer_op::op:
      return set_vertex_buffer(*model, object, a[from], a[from + 1], a[from + 2], number(a[from + 3])), true;
    case glBindVertexBuffers_op::op:
    case glVertexArrayVertexBuffers_op::op:
      return set_vertex_buffers(*model, object, a[from], a, from + 2), true;
    case glVertexAttribFormat_op::op:
    case glVertexArrayAttribFormat_op::op:
      set_format(object, a[from], {number(a[from + 1]), name(a[from + 2]), static_cast<u8>(a[from + 3] != 0)},
                 a[from + 4]);
      return true;
    case glVertexAttribIFormat_op::op:
    case glVertexArrayAttribIFormat_op::op:
      set_format(object, a[from], {number(a[from + 1]), name(a[from + 2]), 0, value_kind::integers}, a[from + 3]);
      return true;
    case glVertexAttribLFormat_op::op:
    case glVertexArrayAttribLFormat_op::op:
      set_format(object, a[from], {number(a[from + 1]), name(a[from + 2]), 0, value_kind::doubles}, a[from + 3]);
      return true;
    case glVertexAttribBinding_op::op:
    case glVertexArrayAttribBinding_op::op:
      return set_binding(object, a[from], a[from + 1]), true;
    case glVertexBindingDivisor_op::op:
    case glVertexArrayBindingDivisor_op::op:
      return set_divisor(object, a[from], a[from + 1]), true;
    case glEnableVertexAttribArray_op::op:
    case glEnableVertexArrayAttrib_op::op:
      return enable_attribute(object, a[from], true), true;
    case glDisableVertexAttribArray_op::op:
    case glDisableVertexArrayAttrib_op::op:
      return enable_attribute(object, a[from], false), true;
    default:
      return false;
  }
}

bool names_its_object(int op) {
  constexpr int ops[] = {
      glVertexArrayVertexBuffer_op::op,   glVertexArrayVertexBuffers_op::op, glVertexArrayAttribFormat_op::op,
      glVertexArrayAttribIFormat_op::op,  glVertexArrayAttribLFormat_op::op, glVertexArrayAttribBinding_op::op,
      glVertexArrayBindingDivisor_op::op, glEnableVertexArrayAttrib_op::op,  glDisableVertexArrayAttrib_op::op};
  return std::ranges::find(ops, op) != std::end(ops);
}

// ---- objects ----

void bind_vao(gl_model* model, GLuint array) {
  const auto found = model->vaos.find(array);
  if (found != model->vaos.end()) model->vao = found->second;
}

void delete_vaos(gl_model* model, i32 count, u64 names) {
  if (names < lowest_address) return;
  const auto* list = reinterpret_cast<const GLuint*>(names);
  for (i32 i = 0; i < count; ++i) {
    const auto found = model->vaos.find(list[i]);
    if (!list[i] || found == model->vaos.end()) continue;
    if (model->vao == found->second) model->vao = model->vaos[0];
    model->vaos.erase(found);
  }
}

void set_elements(gl_model* model, GLuint array, GLuint buffer) {
  if (vertex_array_object* object = named_vao(*model, array)) object->elements = buffer_named(*model, buffer);
}

void push_state(gl_model* model, GLbitfield mask) {
  if (model->saved.size() == attrib_depth) return;
  model->saved.push_back({mask, model->pack, model->unpack, model->bound[pack_target], model->bound[unpack_target],
                          model->bound[array_target], model->client_texture, *model->vao});
}

buffer_pointer living(const gl_model& model, const buffer_pointer& buffer) {
  return buffer && named_buffer(model, buffer->name) == buffer.get() ? buffer : nullptr;
}

void pop_arrays(gl_model* model, const saved_client_state& saved) {
  model->client_texture = saved.client_texture;
  model->bound[array_target] = living(*model, saved.array_buffer);
  const auto found = model->vaos.find(saved.bound.name);
  if (found == model->vaos.end()) return;
  model->vao = found->second;
  *model->vao = saved.bound;
  model->vao->elements = living(*model, saved.bound.elements);
}

void pop_state(gl_model* model) {
  if (model->saved.empty()) return;
  const saved_client_state saved = model->saved.back();
  model->saved.pop_back();
  if (saved.mask & GL_CLIENT_PIXEL_STORE_BIT) {
    model->pack = saved.pack;
    model->unpack = saved.unpack;
    model->bound[pack_target] = living(*model, saved.pack_buffer);
    model->bound[unpack_target] = living(*model, saved.unpack_buffer);
  }
  if (saved.mask & GL_CLIENT_VERTEX_ARRAY_BIT) pop_arrays(model, saved);
}

void switch_fixed(gl_model* model, GLenum array, bool on) {
  const int which = number_of_fixed(*model, array);
  if (which >= 0) model->vao->fixed[which].enabled = on;
}

bool change_objects(gl_model* model, int op, arguments_of a) {
  switch (op) {
    case glBindVertexArray_op::op:
      return bind_vao(model, name(a[0])), true;
    case glDeleteVertexArrays_op::op:
      return delete_vaos(model, number(a[0]), a[1]), true;
    case glVertexArrayElementBuffer_op::op:
      return set_elements(model, name(a[0]), name(a[1])), true;
    case glVertexAttribDivisor_op::op:
    case glVertexAttribDivisorARB_op::op:
      set_binding(model->vao.get(), a[0], a[0]);
      return set_divisor(model->vao.get(), a[0], a[1]), true;
    case glEnableClientState_op::op:
    case glDisableClientState_op::op:
      return switch_fixed(model, name(a[0]), op == glEnableClientState_op::op), true;
    case glClientActiveTexture_op::op:
      if (name(a[0]) - GL_TEXTURE0 < texture_units) model->client_texture = name(a[0]) - GL_TEXTURE0;
      return true;
    case glInterleavedArrays_op::op:
      return interleave(model, name(a[0]), number(a[1]), a[2]), true;
    case glPushClientAttrib_op::op:
      return push_state(model, name(a[0])), true;
    case glPopClientAttrib_op::op:
      return pop_state(model), true;
    default:
      return false;
  }
}

}  // namespace

bool change_arrays(gl_model* model, int op, arguments_of a) {
  if (change_objects(model, op, a) || point_by_client_call(model, op, a)) return true;
  if (point_by_attribute_call(model, op, a)) return true;
  if (names_its_object(op)) return change_object(model, named_vao(*model, name(a[0])), op, a, 1);
  return change_object(model, model->vao.get(), op, a, 0);
}

u32 bytes_of_element(const array_format& format) {
  const bool is_packed = format.type == GL_INT_2_10_10_10_REV || format.type == GL_UNSIGNED_INT_2_10_10_10_REV;
  if (is_packed) return 4;
  const i32 size = format.size == GL_BGRA ? 4 : format.size;
  if (size < 1 || size > 4) return 0;
  return static_cast<u32>(size) * (format.type == GL_FIXED ? 4 : component_bytes(format.type));
}

u32 stride_of(const fixed_array& array) {
  return array.stride ? static_cast<u32>(array.stride) : bytes_of_element(array.format);
}

}  // namespace fuzz
