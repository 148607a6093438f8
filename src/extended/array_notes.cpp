#include "extended/array_notes.h"

#include "ops/client_arrays.h"

namespace {

static_assert(first_attribute_array == first_attribute_index);

constexpr u32 told_apart_units = 8;
constexpr u32 recorded_attributes = max_client_arrays - first_attribute_array;

u32 client_array_number(const __osw_client_state& client_state, GLenum array) {
  if (array == GL_WEIGHT_ARRAY_ARB) return weight_array;
  if (array == GL_MATRIX_INDEX_ARRAY_ARB) return matrix_index_array;
  u32 number = no_array;
  for_client_array(array, [&]<class Array>() { number = Array::index; });
  if (array != GL_TEXTURE_COORD_ARRAY) return number;
  return client_state.client_texture < told_apart_units ? number + client_state.client_texture : far_tex_coord_array;
}

u32 array_number(const __osw_client_state& client_state, const noted_pointer& call) {
  if (!call.is_attribute) return client_array_number(client_state, call.array);
  return call.array < max_attributes ? first_attribute_array + call.array : no_array;
}

// What draws from the first object copy is kept.
void record_pointer(const __osw_thread_state* state, const noted_pointer& call) {
  __osw_client_state* client_state = &state->glrc->client_state;
  if (call.is_attribute && call.array >= recorded_attributes) return;
  if (array_number(*client_state, call) >= max_client_arrays) return;
  __osw_set_client_array(state, client_state, call.array, call.is_attribute, call.size, call.type, call.normalized,
                         call.stride, call.pointer);
  client_state->arrays[__osw_array_index(state, client_state, call.array, call.is_attribute)].kind = call.kind;
}

}  // namespace

array_object* array_object_in_force(const __osw_thread_state* state) {
  return bound_array_object(&state->glrc->arrays);
}

array_object* array_object_named(const __osw_thread_state* state, GLuint name) {
  return named_array_object(&state->glrc->arrays, name);
}

void note_pointer(const __osw_thread_state* state, const noted_pointer& call) {
  if (call.stride < 0) return;
  array_object* object = array_object_in_force(state);
  const __osw_client_state& client_state = state->glrc->client_state;
  note_array_pointer(object, array_number(client_state, call), client_state.array_buffer, call.pointer != nullptr);
  if (object == &state->glrc->arrays.first) record_pointer(state, call);
}

void note_client_switch(const __osw_thread_state* state, GLenum array, bool on) {
  const u32 number = client_array_number(state->glrc->client_state, array);
  note_array_switch(array_object_in_force(state), number, on);
}

void note_attribute_switch(array_object* object, GLuint attribute, bool on) {
  if (attribute < max_attributes) note_array_switch(object, first_attribute_array + attribute, on);
}

u32* noted_binding(const __osw_thread_state* state, GLenum target) {
  if (target == GL_ELEMENT_ARRAY_BUFFER) return &array_object_in_force(state)->element_buffer;
  if (target == GL_DRAW_INDIRECT_BUFFER) return &state->glrc->client_state.indirect_buffer;
  return binding_of(&state->glrc->client_state, target);
}

void note_deleted_buffers(const __osw_thread_state* state, GLsizei count, const GLuint* buffers) {
  constexpr GLenum targets[] = {GL_ARRAY_BUFFER, GL_PIXEL_PACK_BUFFER, GL_PIXEL_UNPACK_BUFFER, GL_DRAW_INDIRECT_BUFFER};
  for (GLsizei i = 0; buffers && i < count; ++i) {
    if (!buffers[i]) continue;
    for (const GLenum target : targets) {
      u32* binding = noted_binding(state, target);
      if (*binding == buffers[i]) *binding = 0;
    }
    forget_buffer(array_object_in_force(state), buffers[i]);
  }
}
