// Buffers as GL has them: what is bound, what lies in them, and what is mapped.
#include <algorithm>
#include <cstring>

#include "gl_model.h"

namespace fuzz {

namespace {

using arguments_of = const driver::argument_bits&;

constexpr u64 most_storage = 1 << 24;

GLenum name(u64 bits) {
  return static_cast<GLenum>(bits);
}

std::int64_t whole(u64 bits) {
  return static_cast<std::int64_t>(bits);
}

buffer_pointer* binding_of(gl_model* model, GLenum target) {
  switch (target) {
    case GL_ARRAY_BUFFER:
      return &model->bound[array_target];
    case GL_ELEMENT_ARRAY_BUFFER:
      return &model->vao->elements;
    case GL_PIXEL_PACK_BUFFER:
      return &model->bound[pack_target];
    case GL_PIXEL_UNPACK_BUFFER:
      return &model->bound[unpack_target];
    case GL_DRAW_INDIRECT_BUFFER:
      return &model->bound[indirect_target];
    case GL_COPY_READ_BUFFER:
      return &model->bound[copy_read_target];
    case GL_COPY_WRITE_BUFFER:
      return &model->bound[copy_write_target];
    case GL_PARAMETER_BUFFER:
      return &model->bound[parameter_target];
    default:
      return nullptr;
  }
}

// A name makes a buffer when it is first bound.
buffer_pointer find_or_make(gl_model* model, GLuint buffer) {
  if (!buffer) return nullptr;
  buffer_pointer& found = model->buffers[buffer];
  if (!found) {
    found = std::make_shared<buffer_object>();
    found->name = buffer;
  }
  return found;
}

void bind(gl_model* model, GLenum target, GLuint buffer) {
  if (buffer_pointer* binding = binding_of(model, target)) *binding = find_or_make(model, buffer);
}

void detach(gl_model* model, const buffer_pointer& buffer) {
  for (buffer_pointer& bound : model->bound) {
    if (bound == buffer) bound = nullptr;
  }
  if (model->vao->elements == buffer) model->vao->elements = nullptr;
  for (vertex_binding& binding : model->vao->bindings) {
    if (binding.buffer == buffer) binding.buffer = nullptr;
  }
  for (fixed_array& array : model->vao->fixed) {
    if (array.buffer == buffer) array.buffer = nullptr;
  }
}

void delete_buffers(gl_model* model, i32 count, u64 names) {
  if (names < lowest_address) return;
  const auto* list = reinterpret_cast<const GLuint*>(names);
  for (i32 i = 0; i < count; ++i) {
    const auto found = model->buffers.find(list[i]);
    if (found == model->buffers.end()) continue;
    if (found->second) {
      detach(model, found->second);
      found->second->is_mapped = false;
    }
    model->buffers.erase(found);
  }
}

void define(const gl_model& model, buffer_object* buffer, u64 size, u64 data) {
  if (!buffer || whole(size) < 0 || size > most_storage) return;
  buffer->is_mapped = false;
  buffer->bytes.assign(size, 0);
  if (data >= lowest_address && model.has_contents && size) {
    std::memcpy(buffer->bytes.data(), reinterpret_cast<const void*>(data), size);
  }
}

bool is_inside(const buffer_object& buffer, u64 offset, u64 size) {
  return whole(offset) >= 0 && whole(size) >= 0 && offset <= buffer.bytes.size() &&
         size <= buffer.bytes.size() - offset;
}

void replace(const gl_model& model, buffer_object* buffer, u64 offset, u64 size, u64 data) {
  if (!buffer || buffer->is_mapped || !is_inside(*buffer, offset, size) || data < lowest_address) return;
  if (model.has_contents && size) {
    std::memcpy(buffer->bytes.data() + offset, reinterpret_cast<const void*>(data), size);
  }
}

void copy(buffer_object* from, buffer_object* to, u64 from_at, u64 to_at, u64 size) {
  if (!from || !to || from->is_mapped || to->is_mapped) return;
  if (!is_inside(*from, from_at, size) || !is_inside(*to, to_at, size) || !size) return;
  if (from == to && from_at < to_at + size && to_at < from_at + size) return;
  std::memcpy(to->bytes.data() + to_at, from->bytes.data() + from_at, size);
}

bool is_valid_access(GLbitfield access) {
  constexpr GLbitfield invalidates =
      GL_MAP_INVALIDATE_RANGE_BIT | GL_MAP_INVALIDATE_BUFFER_BIT | GL_MAP_UNSYNCHRONIZED_BIT;
  if (!(access & (GL_MAP_READ_BIT | GL_MAP_WRITE_BIT))) return false;
  if ((access & GL_MAP_READ_BIT) && (access & invalidates)) return false;
  return !(access & GL_MAP_FLUSH_EXPLICIT_BIT) || (access & GL_MAP_WRITE_BIT);
}

GLbitfield access_bits(GLenum access) {
  if (access == GL_READ_ONLY) return GL_MAP_READ_BIT;
  if (access == GL_WRITE_ONLY) return GL_MAP_WRITE_BIT;
  return access == GL_READ_WRITE ? GL_MAP_READ_BIT | GL_MAP_WRITE_BIT : 0;
}

u64 map(buffer_object* buffer, u64 offset, u64 length, GLbitfield access) {
  if (!buffer || buffer->is_mapped || !is_valid_access(access)) return 0;
  if (!is_inside(*buffer, offset, length) || length == 0) return 0;
  buffer->is_mapped = true;
  buffer->map_offset = offset;
  buffer->map_length = length;
  buffer->map_access = access;
  return reinterpret_cast<u64>(buffer->bytes.data() + offset);
}

u64 size_of(const buffer_object* buffer) {
  return buffer ? buffer->bytes.size() : 0;
}

// What the calls that take a target or a name change.
bool change_contents(gl_model* model, int op, arguments_of a) {
  switch (op) {
    case glBufferData_op::op:
      return define(*model, bound_buffer(*model, name(a[0])), a[1], a[2]), true;
    case glNamedBufferData_op::op:
      return define(*model, named_buffer(*model, name(a[0])), a[1], a[2]), true;
    case glBufferSubData_op::op:
      return replace(*model, bound_buffer(*model, name(a[0])), a[1], a[2], a[3]), true;
    case glNamedBufferSubData_op::op:
      return replace(*model, named_buffer(*model, name(a[0])), a[1], a[2], a[3]), true;
    case glCopyBufferSubData_op::op:
      copy(bound_buffer(*model, name(a[0])), bound_buffer(*model, name(a[1])), a[2], a[3], a[4]);
      return true;
    case glCopyNamedBufferSubData_op::op:
      copy(named_buffer(*model, name(a[0])), named_buffer(*model, name(a[1])), a[2], a[3], a[4]);
      return true;
    default:
      return false;
  }
}

bool unmap(buffer_object* buffer) {
  if (buffer) buffer->is_mapped = false;
  return true;
}

}  // namespace

buffer_object* bound_buffer(const gl_model& model, GLenum target) {
  const buffer_pointer* binding = binding_of(const_cast<gl_model*>(&model), target);
  return binding ? binding->get() : nullptr;
}

buffer_object* named_buffer(const gl_model& model, GLuint name) {
  const auto found = model.buffers.find(name);
  return found == model.buffers.end() ? nullptr : found->second.get();
}

u64 map_of_call(gl_model* model, int op, arguments_of a) {
  switch (op) {
    case glMapBuffer_op::op: {
      buffer_object* buffer = bound_buffer(*model, name(a[0]));
      return map(buffer, 0, size_of(buffer), access_bits(name(a[1])));
    }
    case glMapNamedBuffer_op::op: {
      buffer_object* buffer = named_buffer(*model, name(a[0]));
      return map(buffer, 0, size_of(buffer), access_bits(name(a[1])));
    }
    case glMapBufferRange_op::op:
      return map(bound_buffer(*model, name(a[0])), a[1], a[2], name(a[3]));
    case glMapNamedBufferRange_op::op:
      return map(named_buffer(*model, name(a[0])), a[1], a[2], name(a[3]));
    default:
      return 0;
  }
}

bool change_buffers(gl_model* model, int op, arguments_of a) {
  switch (op) {
    case glBindBuffer_op::op:
      return bind(model, name(a[0]), name(a[1])), true;
    case glDeleteBuffers_op::op:
      return delete_buffers(model, static_cast<i32>(a[0]), a[1]), true;
    case glUnmapBuffer_op::op:
      return unmap(bound_buffer(*model, name(a[0])));
    case glUnmapNamedBuffer_op::op:
      return unmap(named_buffer(*model, name(a[0])));
    case glFlushMappedBufferRange_op::op:
    case glFlushMappedNamedBufferRange_op::op:
      return true;
    default:
      return change_contents(model, op, a);
  }
}

}  // namespace fuzz
