#include "threaded/client_arrays.h"

#include "ops/client_arrays.h"
#include "threaded/encode.h"

namespace {

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

template <class Op>
void encode_array_switch(GLenum array, bool is_attribute, bool on) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  mirror<Op>(state, array);
  __osw_client_state* client_state = client_state_of(state);
  set_bit(&client_state->enabled_mask, __osw_array_index(state, client_state, array, is_attribute), on);
  push<Op>(state, array);
}

template <class Op>
void encode_bind(GLenum target, GLuint name) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  mirror<Op>(state, target, name);
  if (u32* binding = binding_of(client_state_of(state), target)) *binding = name;
  push<Op>(state, target, name);
}

}  // namespace

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

u32 __osw_array_index(const __osw_thread_state*, const __osw_client_state* client_state, u32 value, bool is_attribute) {
  if (is_attribute) return value < attribute_count ? value + first_attribute_index : unknown_array;
  u32 index = unknown_array;
  for_client_array(value, [&]<class Array>() {
    index = Array::index;
    // Unit 8, which the active client texture may be, has the entry of the fog coordinates.
    if constexpr (std::is_same_v<Array, tex_coord_array>) index += client_state->client_texture;
  });
  return index;
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

void glVertexAttribPointer_op::encode(GLuint index, GLint size, GLenum type, GLboolean normalized, GLsizei stride,
                                      const void* pointer) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  mirror<glVertexAttribPointer_op>(state, index, size, type, normalized, stride, pointer);
  __osw_set_client_array(state, client_state_of(state), index, true, size, type, normalized, stride, pointer);
  push<glVertexAttribPointer_op>(state, index, size, type, normalized, stride, pointer);
}

void glVertexAttribIPointer_op::encode(GLuint index, GLint size, GLenum type, GLsizei stride, const void* pointer) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  mirror<glVertexAttribIPointer_op>(state, index, size, type, stride, pointer);
  __osw_set_client_array(state, client_state_of(state), index, true, size, type, 0, stride, pointer);
  push<glVertexAttribIPointer_op>(state, index, size, type, stride, pointer);
}

void glEnableClientState_op::encode(GLenum array) {
  encode_array_switch<glEnableClientState_op>(array, false, true);
}

void glDisableClientState_op::encode(GLenum array) {
  encode_array_switch<glDisableClientState_op>(array, false, false);
}

void glEnableVertexAttribArray_op::encode(GLuint index) {
  encode_array_switch<glEnableVertexAttribArray_op>(index, true, true);
}

void glDisableVertexAttribArray_op::encode(GLuint index) {
  encode_array_switch<glDisableVertexAttribArray_op>(index, true, false);
}

void glClientActiveTexture_op::encode(GLenum texture) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  mirror<glClientActiveTexture_op>(state, texture);
  const u32 unit = texture - GL_TEXTURE0;
  if (unit <= largest_client_texture) client_state_of(state)->client_texture = unit;
  push<glClientActiveTexture_op>(state, texture);
}

void glBindBuffer_op::encode(GLenum target, GLuint buffer) {
  encode_bind<glBindBuffer_op>(target, buffer);
}

void glBindFramebuffer_op::encode(GLenum target, GLuint framebuffer) {
  encode_bind<glBindFramebuffer_op>(target, framebuffer);
}
