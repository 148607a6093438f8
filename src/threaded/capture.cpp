#include "threaded/capture.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "dispatch/report.h"
#include "threaded/encode_pointer.h"
#include "threaded/encoders.h"

namespace {

struct array_list {
  u32 indices[max_client_arrays];
  u32 count;
};

array_list list_of(u32 mask) {
  array_list list{};
  for (; mask; mask &= mask - 1) {
    list.indices[list.count++] = static_cast<u32>(__builtin_ctz(mask));
  }
  return list;
}

void set_effective_stride(__osw_client_array* array) {
  const u32 packed = static_cast<u32>(array->size) * __osw_gl_type_size(array->type);
  array->effective_stride = array->stride ? static_cast<u32>(array->stride) : packed;
  array->reach = array->effective_stride;
}

u64 address(const void* pointer) {
  return reinterpret_cast<u64>(pointer);
}

// Whether a lies within one stride of b. A stride is a signed number; within a negative one lies nothing.
bool within_stride(const void* a, const void* b, u32 stride) {
  const u64 distance = address(a) > address(b) ? address(a) - address(b) : address(b) - address(a);
  return static_cast<i32>(stride) > 0 && distance < stride;
}

// An array that fits lies less than a stride above the base.
u32 offset_in(const __osw_array_group& group, const __osw_client_array& array) {
  return static_cast<u32>(address(array.pointer) - address(group.base));
}

bool fits(const __osw_array_group& group, const __osw_client_array& array) {
  return array.effective_stride == group.stride && within_stride(array.pointer, group.base, group.stride);
}

u32 group_for(__osw_client_state* client_state, const __osw_client_array& array) {
  u32 number = 0;
  while (number < client_state->group_count && !fits(client_state->groups[number], array)) ++number;
  if (number == client_state->group_count) {
    client_state->groups[number] = {};
    client_state->groups[number].base = static_cast<const u8*>(array.pointer);
    client_state->groups[number].stride = array.effective_stride;
    ++client_state->group_count;
  }
  return number;
}

// The group's base has gone down to a new array, so the arrays that were in the group before lie further from it. Which
// they are is told by stride and distance, as when they were put in, and not by the number of their group; but none is
// sent to below the block.
void lower_base(__osw_client_state* client_state, __osw_array_group* group, const u32* list, u32 count) {
  for (u32 i = 0; i < count; ++i) {
    __osw_client_array* array = &client_state->arrays[list[i]];
    if (fits(*group, *array) && array->pointer >= group->base) array->group_offset = offset_in(*group, *array);
  }
}

// Bytes of a group's vertex that one of its arrays reads.
u32 reached_bytes(const __osw_client_state* client_state, const array_list& list, u32 group) {
  u64 reached = 0;
  for (u32 i = 0; i < list.count; ++i) {
    const __osw_client_array& array = client_state->arrays[list.indices[i]];
    if (array.group == group) reached = std::max(reached, u64{array.group_offset} + array.reach);
  }
  return static_cast<u32>(std::min(reached, u64{client_state->groups[group].stride}));
}

// Lays the groups out in the block. Result: its size in bytes; more than `largest_block` when there can be none.
u64 lay_out_groups(__osw_client_state* client_state, const array_list& list, u32 first, u64 end) {
  u64 total = 0;
  for (u32 i = 0; i < client_state->group_count; ++i) {
    __osw_array_group* group = &client_state->groups[i];
    const u64 alloc = (group->stride * end + 7) & ~u64{7};
    group->blob_offset = static_cast<u32>(total);
    group->copy_start = group->stride * first;
    group->copy_size = static_cast<u32>(group->stride * (end - first - 1) + reached_bytes(client_state, list, i));
    group->alloc_size = static_cast<u32>(alloc);
    total += alloc;
    if (total > largest_block) break;
  }
  return total;
}

// The region of each group is sized from vertex 0, so that indices need no rewriting; what lies below the first vertex
// stays unwritten.
void copy_groups(const __osw_client_state* client_state, u8* blob) {
  for (u32 i = 0; i < client_state->group_count; ++i) {
    const __osw_array_group& group = client_state->groups[i];
    if (!group.copy_size) continue;  // the arrays may point nowhere
    memcpy(blob + group.blob_offset + group.copy_start, group.base + group.copy_start, group.copy_size);
  }
}

void push_tex_coord_pointer(__osw_thread_state* state, const __osw_client_array& array, const void* pointer) {
  const u32 active = state->glrc->client_state.client_texture;
  const u32 unit = array.index - tex_coord_array::index;
  if (unit != active) push<glClientActiveTexture_op>(state, GL_TEXTURE0 + unit);
  push_pointer_call<glTexCoordPointer_op>(state, array, pointer);
  if (unit != active) push<glClientActiveTexture_op>(state, GL_TEXTURE0 + active);
}

void push_attribute_pointer(__osw_thread_state* state, const __osw_client_array& array, const void* pointer) {
  const u32 attribute = array.index - first_attribute_index;
  switch (array.kind) {
    case array_kind::floats:
      return push<glVertexAttribPointer_op>(state, attribute, array.size, array.type, array.normalized, array.stride,
                                            pointer);
    case array_kind::integers:
      return push<extended_form<glVertexAttribIPointer_op>>(state, attribute, array.size, array.type, array.stride,
                                                            pointer);
    case array_kind::doubles:
      return push<glVertexAttribLPointer_op>(state, attribute, array.size, array.type, array.stride, pointer);
  }
}

// Aims the workers' array at `pointer`, with all else as the application gave it.
void push_pointer(__osw_thread_state* state, const __osw_client_array& array, const void* pointer) {
  if (array.index >= first_attribute_index) return push_attribute_pointer(state, array, pointer);
  for_client_array(array.array, [&]<class Array>() {
    if constexpr (std::is_same_v<Array, tex_coord_array>) {
      push_tex_coord_pointer(state, array, pointer);
    } else {
      push_pointer_call<typename Array::call>(state, array, pointer);
    }
  });
}

// The array buffer that GL has bound. The record keeps one that was deleted since, and GL does not: to bind that one
// again would make a new buffer of its name.
GLuint bound_array_buffer(const __osw_thread_state* state) {
  GLint bound = 0;
  if (state->glrc->client_state.array_buffer) encoder<glGetIntegerv_op>()(GL_ARRAY_BUFFER_BINDING, &bound);
  return static_cast<GLuint>(bound);
}

// Runs `push_pointers` with no array buffer bound on the workers, which would take the addresses for offsets into it.
// `buffer` is the one that is bound.
template <class PushPointers>
void push_addresses(__osw_thread_state* state, GLuint buffer, PushPointers push_pointers) {
  if (buffer) push<glBindBuffer_op>(state, GL_ARRAY_BUFFER, 0);
  push_pointers();
  if (buffer) push<glBindBuffer_op>(state, GL_ARRAY_BUFFER, buffer);
}

void aim_at_blob(__osw_thread_state* state, const array_list& list, const u8* blob, u32* mask) {
  const __osw_client_state* client_state = &state->glrc->client_state;
  for (u32 i = 0; i < list.count; ++i) {
    const __osw_client_array& array = client_state->arrays[list.indices[i]];
    *mask |= 1u << list.indices[i];
    const u64 offset = client_state->groups[array.group].blob_offset + array.group_offset;
    push_pointer(state, array, reinterpret_cast<const void*>(reinterpret_cast<u64>(blob) + offset));
  }
}

}  // namespace

u32 __osw_gl_type_size(GLenum type) {
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

u32 __osw_capture_arrays(__osw_thread_state* state, bool indexed, u32 first, u64 end, captured_arrays* captured) {
  *captured = {};
  __osw_client_state* client_state = &state->glrc->client_state;
  const u32 enabled = client_state->enabled_mask;
  if (!enabled || enabled == client_state->buffered_mask) return 0;
  if (indexed && client_state->element_buffer) return 1;
  if (end <= first) return 0;

  const u32 mask = enabled & ~client_state->buffered_mask;
  for (u32 rest = mask; rest; rest &= rest - 1) set_effective_stride(&client_state->arrays[__builtin_ctz(rest)]);
  const u32 uncaptured = copy_listed_arrays(state, mask, first, end, captured);
  if (uncaptured || captured->out_of_memory) return uncaptured;
  if (mask) aim_listed_arrays(state, mask, bound_array_buffer(state), captured);
  return 0;
}

u32 copy_listed_arrays(__osw_thread_state* state, u32 mask, u32 first, u64 end, captured_arrays* captured) {
  __osw_client_state* client_state = &state->glrc->client_state;
  const array_list list = list_of(mask);
  __osw_group_arrays(client_state, list.indices, list.count);
  const u64 total = lay_out_groups(client_state, list, first, end);
  if (total > largest_block) return 1;
  // Arrays that take no bytes are aimed at a null block.
  u8* blob = total ? static_cast<u8*>(malloc(total)) : nullptr;
  if (total && !blob) {
    __osw_report(severity_error, "no memory for the vertices of a draw\n");
    captured->out_of_memory = true;
    return 0;
  }
  if (blob) copy_groups(client_state, blob);
  captured->blobs[0] = blob;
  captured->blob_count = blob ? 1 : 0;
  return 0;
}

void aim_listed_arrays(__osw_thread_state* state, u32 mask, GLuint array_buffer, captured_arrays* captured) {
  const auto* blob = captured->blob_count ? static_cast<const u8*>(captured->blobs[0]) : nullptr;
  captured->array_buffer = array_buffer;
  push_addresses(state, array_buffer, [&] { aim_at_blob(state, list_of(mask), blob, &captured->mask); });
}

void __osw_group_arrays(__osw_client_state* client_state, const u32* list, u32 count) {
  client_state->group_count = 0;
  for (u32 i = 0; i < count; ++i) {
    __osw_client_array* array = &client_state->arrays[list[i]];
    array->group = group_for(client_state, *array);
    __osw_array_group* group = &client_state->groups[array->group];
    if (array->pointer >= group->base) {
      array->group_offset = offset_in(*group, *array);
      continue;
    }
    group->base = static_cast<const u8*>(array->pointer);
    lower_base(client_state, group, list, i + 1);
  }
}

void __osw_restore_arrays(__osw_thread_state* state, const captured_arrays& captured) {
  if (!captured.mask) return;
  push_addresses(state, captured.array_buffer, [&] {
    for (u32 rest = captured.mask; rest; rest &= rest - 1) {
      const __osw_client_array& array = state->glrc->client_state.arrays[__builtin_ctz(rest)];
      push_pointer(state, array, array.pointer);
    }
  });
}
