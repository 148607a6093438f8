#include "threaded/client_arrays.h"

#include "threaded/encoders.h"

namespace {

constexpr u32 first_texture_index = 3;
constexpr u32 fog_coord_index = 11;
constexpr u32 first_attribute_index = 16;
constexpr u32 attribute_count = 16;
constexpr u32 largest_client_texture = 8;

__osw_client_state* client_state_of(const __osw_thread_state* state) {
  return &state->glrc->client_state;
}

// The processor takes a shift's count modulo 32, so that an unknown array stands for the first one's bit.
u32 bit_of(u32 index) {
  return 1u << (index % 32);
}

void set_bit(u32* mask, u32 index, bool on) {
  *mask = on ? *mask | bit_of(index) : *mask & ~bit_of(index);
}

// The encoder of a client array's pointer call: `array` and what the call says of it, then the call's own arguments.
template <class Op, class... Parameters>
void encode_pointer(u32 array, i32 size, u32 type, i32 stride, const void* pointer, Parameters... arguments) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  mirror<Op>(state, arguments...);
  __osw_set_client_array(state, client_state_of(state), array, false, size, type, 0, stride, pointer);
  push<Op>(state, arguments...);
}

template <class Op>
void encode_array_switch(GLenum array, bool is_attribute, bool on) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  mirror<Op>(state, array);
  __osw_client_state* client_state = client_state_of(state);
  set_bit(&client_state->enabled_mask, __osw_array_index(state, client_state, array, is_attribute), on);
  push<Op>(state, array);
}

// The binding that the target names, or null for one that is not tracked.
u32* binding_of(__osw_client_state* client_state, GLenum target) {
  switch (target) {
    case GL_ARRAY_BUFFER:
      return &client_state->array_buffer;
    case GL_ELEMENT_ARRAY_BUFFER:
      return &client_state->element_buffer;
    case GL_PIXEL_PACK_BUFFER:
      return &client_state->pack_buffer;
    case GL_PIXEL_UNPACK_BUFFER:
      return &client_state->unpack_buffer;
    case GL_FRAMEBUFFER:
      return &client_state->framebuffer;
    default:
      return nullptr;
  }
}

template <class Op>
void encode_bind(GLenum target, GLuint name) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  mirror<Op>(state, target, name);
  if (u32* binding = binding_of(client_state_of(state), target)) *binding = name;
  push<Op>(state, target, name);
}

}  // namespace

u32 __osw_array_index(const __osw_thread_state*, const __osw_client_state* client_state, u32 value, bool is_attribute) {
  if (is_attribute) return value < attribute_count ? value + first_attribute_index : unknown_array;
  switch (value) {
    case GL_VERTEX_ARRAY:
      return 0;
    case GL_COLOR_ARRAY:
      return 1;
    case GL_NORMAL_ARRAY:
      return 2;
    case GL_TEXTURE_COORD_ARRAY:
      return client_state->client_texture + first_texture_index;
    case GL_FOG_COORD_ARRAY:
      return fog_coord_index;
    case GL_SECONDARY_COLOR_ARRAY:
      return 12;
    case GL_INDEX_ARRAY:
      return 13;
    case GL_EDGE_FLAG_ARRAY:
      return 14;
    default:
      return unknown_array;
  }
}

void __osw_set_client_array(const __osw_thread_state* state, __osw_client_state* client_state, u32 value,
                            bool is_attribute, i32 size, u32 type, u8 normalized, i32 stride, const void* pointer) {
  const u32 index = __osw_array_index(state, client_state, value, is_attribute);
  if (index == unknown_array) return;
  __osw_client_array* entry = &client_state->arrays[index];
  entry->array = value;
  entry->buffer = client_state->array_buffer;
  entry->size = size;
  entry->type = type;
  entry->normalized = normalized;
  entry->stride = stride;
  entry->pointer = pointer;
  entry->index = index;
  set_bit(&client_state->buffered_mask, index, client_state->array_buffer != 0);
}

template <>
void encode<glVertexPointer_op>(GLint size, GLenum type, GLsizei stride, const void* pointer) {
  encode_pointer<glVertexPointer_op>(GL_VERTEX_ARRAY, size, type, stride, pointer, size, type, stride, pointer);
}

template <>
void encode<glNormalPointer_op>(GLenum type, GLsizei stride, const void* pointer) {
  encode_pointer<glNormalPointer_op>(GL_NORMAL_ARRAY, 3, type, stride, pointer, type, stride, pointer);
}

template <>
void encode<glColorPointer_op>(GLint size, GLenum type, GLsizei stride, const void* pointer) {
  encode_pointer<glColorPointer_op>(GL_COLOR_ARRAY, size, type, stride, pointer, size, type, stride, pointer);
}

template <>
void encode<glIndexPointer_op>(GLenum type, GLsizei stride, const void* pointer) {
  encode_pointer<glIndexPointer_op>(GL_INDEX_ARRAY, 1, type, stride, pointer, type, stride, pointer);
}

// Unit 8, which the active client texture may be, has the entry of the fog coordinates.
template <>
void encode<glTexCoordPointer_op>(GLint size, GLenum type, GLsizei stride, const void* pointer) {
  encode_pointer<glTexCoordPointer_op>(GL_TEXTURE_COORD_ARRAY, size, type, stride, pointer, size, type, stride,
                                       pointer);
}

template <>
void encode<glEdgeFlagPointer_op>(GLsizei stride, const void* pointer) {
  encode_pointer<glEdgeFlagPointer_op>(GL_EDGE_FLAG_ARRAY, 1, GL_UNSIGNED_BYTE, stride, pointer, stride, pointer);
}

template <>
void encode<glFogCoordPointer_op>(GLenum type, GLsizei stride, const void* pointer) {
  encode_pointer<glFogCoordPointer_op>(GL_FOG_COORD_ARRAY, 1, type, stride, pointer, type, stride, pointer);
}

template <>
void encode<glSecondaryColorPointer_op>(GLint size, GLenum type, GLsizei stride, const void* pointer) {
  encode_pointer<glSecondaryColorPointer_op>(GL_SECONDARY_COLOR_ARRAY, size, type, stride, pointer, size, type, stride,
                                             pointer);
}

template <>
void encode<glVertexAttribPointer_op>(GLuint index, GLint size, GLenum type, GLboolean normalized, GLsizei stride,
                                      const void* pointer) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  mirror<glVertexAttribPointer_op>(state, index, size, type, normalized, stride, pointer);
  __osw_set_client_array(state, client_state_of(state), index, true, size, type, normalized, stride, pointer);
  push<glVertexAttribPointer_op>(state, index, size, type, normalized, stride, pointer);
}

template <>
void encode<glVertexAttribIPointer_op>(GLuint index, GLint size, GLenum type, GLsizei stride, const void* pointer) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  mirror<glVertexAttribIPointer_op>(state, index, size, type, stride, pointer);
  __osw_set_client_array(state, client_state_of(state), index, true, size, type, 0, stride, pointer);
  push<glVertexAttribIPointer_op>(state, index, size, type, stride, pointer);
}

template <>
void encode<glEnableClientState_op>(GLenum array) {
  encode_array_switch<glEnableClientState_op>(array, false, true);
}

template <>
void encode<glDisableClientState_op>(GLenum array) {
  encode_array_switch<glDisableClientState_op>(array, false, false);
}

template <>
void encode<glEnableVertexAttribArray_op>(GLuint index) {
  encode_array_switch<glEnableVertexAttribArray_op>(index, true, true);
}

template <>
void encode<glDisableVertexAttribArray_op>(GLuint index) {
  encode_array_switch<glDisableVertexAttribArray_op>(index, true, false);
}

template <>
void encode<glClientActiveTexture_op>(GLenum texture) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  mirror<glClientActiveTexture_op>(state, texture);
  const u32 unit = texture - GL_TEXTURE0;
  if (unit <= largest_client_texture) client_state_of(state)->client_texture = unit;
  push<glClientActiveTexture_op>(state, texture);
}

template <>
void encode<glBindBuffer_op>(GLenum target, GLuint buffer) {
  encode_bind<glBindBuffer_op>(target, buffer);
}

template <>
void encode<glBindFramebuffer_op>(GLenum target, GLuint framebuffer) {
  encode_bind<glBindFramebuffer_op>(target, framebuffer);
}
