#include "extended/vertices.h"

#include "extended/array_notes.h"

namespace {

constexpr u64 record_mask = 0xFFFFFFFF;  // arrays of which the pointer calls are kept

// Bytes of the element of an array; 0 where they are not known.
u32 element_bytes(const __osw_client_array& array) {
  switch (array.type) {
    case GL_INT_2_10_10_10_REV:
    case GL_UNSIGNED_INT_2_10_10_10_REV:
    case GL_UNSIGNED_INT_10F_11F_11F_REV:
      return 4;
    default:
      break;
  }
  const i32 components = array.size == GL_BGRA ? 4 : array.size;
  if (components < 1 || components > 4) return 0;
  const u32 bytes = array.type == GL_FIXED ? 4 : __osw_gl_type_size(array.type);
  return static_cast<u32>(components) * bytes;
}

bool measure(__osw_client_array* array) {
  array->reach = element_bytes(*array);
  array->effective_stride = array->stride ? static_cast<u32>(array->stride) : array->reach;
  return array->reach != 0;
}

}  // namespace

vertex_range vertices_from(GLint first, GLsizei count) {
  if (first < 0) return unknown_vertices;
  const auto begin = static_cast<u32>(first);
  return {true, begin, count > 0 ? u64{begin} + static_cast<u32>(count) : begin};
}

vertex_range vertices_of_indices(GLenum type, const void* indices, GLsizei count, GLint base) {
  const index_range range = scan_indices(type, indices, indices ? count : 0);
  if (range.end <= range.first) return {true, 0, 0};
  const int64_t first = int64_t{range.first} + base;
  if (first < 0 || first > 0xFFFFFFFF) return unknown_vertices;
  return {true, static_cast<u32>(first), range.end + static_cast<u64>(int64_t{base})};
}

bool reads_vertices_in_memory(const __osw_thread_state* state) {
  if (state->glrc->is_core) return false;
  const array_object& object = *array_object_in_force(state);
  return object.is_unknown || arrays_in_memory(object);
}

bool reads_indices_in_memory(const __osw_thread_state* state) {
  const array_object& object = *array_object_in_force(state);
  return !state->glrc->is_core && !object.is_unknown && !object.element_buffer;
}

bool measure_arrays_in_memory(const __osw_thread_state* state) {
  const array_object& object = *array_object_in_force(state);
  const u64 arrays = arrays_in_memory(object);
  if (object.is_unknown || object.name || (arrays & ~(object.by_pointer & record_mask))) return false;
  for (u64 rest = arrays; rest; rest &= rest - 1) {
    if (!measure(&state->glrc->client_state.arrays[__builtin_ctzll(rest)])) return false;
  }
  return true;
}

bool capture_vertices(__osw_thread_state* state, const vertex_range& range, captured_arrays* captured) {
  const array_object& object = *array_object_in_force(state);
  const u64 arrays = arrays_in_memory(object);
  if (range.is_known && range.end <= range.first) return true;
  if (!range.is_known || !measure_arrays_in_memory(state) || divided_arrays(object, arrays)) return false;
  const auto mask = static_cast<u32>(arrays);
  if (copy_listed_arrays(state, mask, range.first, range.end, captured)) return false;
  if (!captured->out_of_memory) {
    aim_listed_arrays(state, mask, state->glrc->client_state.array_buffer, captured);
  }
  return true;
}
