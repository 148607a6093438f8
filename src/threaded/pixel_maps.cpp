// The stipple pattern and the pixel maps: tables that an unpack buffer, where one is bound, takes the place of.
#include <cstdlib>

#include "threaded/encoders.h"

namespace {

bool has_unpack_buffer(const __osw_thread_state* state) {
  return state->glrc->client_state.unpack_buffer != 0;
}

template <class Op, class T>
void push_map(__osw_thread_state* state, GLenum map, GLsizei size, const T* values, void* copy) {
  if (has_unpack_buffer(state)) return push<Op>(state, map, size, values);
  if (values && !copy) return;
  push_with_blobs<Op>(state, array_blob<Op>, map, size, copy);
}

template <class Op, class T>
void* copy_map(GLenum map, GLsizei size, const T* values) {
  return values ? __osw_copy_to_blob(values, bytes_of<Op>(Op::payload(map, size, values)), Op::name) : nullptr;
}

// Copies before it looks at the binding: with a buffer bound the offset is read as an address and the copy dropped.
template <class Op, class T>
void encode_integer_map(GLenum map, GLsizei size, const T* values) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  mirror<Op>(state, map, size, values);
  void* copy = copy_map<Op>(map, size, values);
  push_map<Op>(state, map, size, values, copy);
  if (has_unpack_buffer(state)) free(copy);
}

}  // namespace

// More bytes are copied for a stipple than its pattern has.
void glPolygonStipple_op::encode(const GLubyte* mask) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  mirror<glPolygonStipple_op>(state, mask);
  if (has_unpack_buffer(state)) return push<glPolygonStipple_op>(state, mask);
  const auto bytes = static_cast<u64>(payload(mask).bytes);
  void* copy = mask ? __osw_copy_to_blob(mask, bytes, name) : nullptr;
  if (mask && !copy) return;
  push_with_blobs<glPolygonStipple_op>(state, array_blob<glPolygonStipple_op>, copy);
}

void glPixelMapfv_op::encode(GLenum map, GLsizei size, const GLfloat* values) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  mirror<glPixelMapfv_op>(state, map, size, values);
  void* copy = has_unpack_buffer(state) ? nullptr : copy_map<glPixelMapfv_op>(map, size, values);
  push_map<glPixelMapfv_op>(state, map, size, values, copy);
}

void glPixelMapuiv_op::encode(GLenum map, GLsizei size, const GLuint* values) {
  encode_integer_map<glPixelMapuiv_op>(map, size, values);
}

void glPixelMapusv_op::encode(GLenum map, GLsizei size, const GLushort* values) {
  encode_integer_map<glPixelMapusv_op>(map, size, values);
}
