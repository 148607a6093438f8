// The stipple pattern, the pixel maps, lists of display lists, and the one matrix uniform that is unlike the others.
#include "threaded/call_lists_size.h"
#include "threaded/encoders.h"

namespace {

bool has_unpack_buffer(const __osw_thread_state* state) {
  return state->glrc->client_state.unpack_buffer != 0;
}

template <class Op, class T>
void push_map(__osw_thread_state* state, GLenum map, GLsizei size, const T* values, void* copy) {
  if (has_unpack_buffer(state)) return push<Op>(state, map, size, values);
  if (values && !copy) return;
  push_with_blobs<Op>(state, 1u << 2, map, size, copy);
}

template <class Op, class T>
void* copy_map(GLsizei size, const T* values) {
  return values ? __osw_copy_to_blob(values, __osw_checked_bytes(size, sizeof *values), Op::name) : nullptr;
}

// Copies before it looks at the binding: with a buffer bound the offset is read as an address and the copy dropped.
template <class Op, class T>
void encode_integer_map(GLenum map, GLsizei size, const T* values) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  mirror<Op>(state, map, size, values);
  void* copy = copy_map<Op>(size, values);
  push_map<Op>(state, map, size, values, copy);
  if (has_unpack_buffer(state)) free(copy);
}

// The bytes that are copied for a stipple, whose pattern is shorter.
constexpr u64 stipple_bytes = 1024;

}  // namespace

template <>
void encode<glPolygonStipple_op>(const GLubyte* mask) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  mirror<glPolygonStipple_op>(state, mask);
  if (has_unpack_buffer(state)) return push<glPolygonStipple_op>(state, mask);
  void* copy = mask ? __osw_copy_to_blob(mask, stipple_bytes, glPolygonStipple_op::name) : nullptr;
  if (mask && !copy) return;
  push_with_blobs<glPolygonStipple_op>(state, 1, copy);
}

template <>
void encode<glPixelMapfv_op>(GLenum map, GLsizei size, const GLfloat* values) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  mirror<glPixelMapfv_op>(state, map, size, values);
  void* copy = has_unpack_buffer(state) ? nullptr : copy_map<glPixelMapfv_op>(size, values);
  push_map<glPixelMapfv_op>(state, map, size, values, copy);
}

template <>
void encode<glPixelMapuiv_op>(GLenum map, GLsizei size, const GLuint* values) {
  encode_integer_map<glPixelMapuiv_op>(map, size, values);
}

template <>
void encode<glPixelMapusv_op>(GLenum map, GLsizei size, const GLushort* values) {
  encode_integer_map<glPixelMapusv_op>(map, size, values);
}

u32 __osw_call_lists_size(GLsizei count, GLenum type) {
  if (count < 1) return 0;
  u64 item = 0;
  switch (type) {
    case GL_BYTE:
    case GL_UNSIGNED_BYTE:
      item = 1;
      break;
    case GL_SHORT:
    case GL_UNSIGNED_SHORT:
    case GL_2_BYTES:
      item = 2;
      break;
    case GL_3_BYTES:
      item = 3;
      break;
    case GL_INT:
    case GL_UNSIGNED_INT:
    case GL_FLOAT:
    case GL_4_BYTES:
      item = 4;
      break;
    default:
      break;
  }
  return static_cast<u32>(__osw_checked_bytes(count, item));
}

template <>
void encode<glCallLists_op>(GLsizei count, GLenum type, const void* lists) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  mirror<glCallLists_op>(state, count, type, lists);
  const u32 bytes = __osw_call_lists_size(count, type);
  const void* copy = lists ? __osw_copy_to_blob(lists, bytes, glCallLists_op::name) : nullptr;
  if (lists && !copy) count = 0;
  push_with_blobs<glCallLists_op>(state, 1u << 2, count, type, copy);
}

// Unlike its siblings this one hands the workers the application's own pointer, and for many matrices also the right to
// free it.
template <>
void encode<glUniformMatrix2x3fv_op>(GLint location, GLsizei count, GLboolean transpose, const GLfloat* value) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  mirror<glUniformMatrix2x3fv_op>(state, location, count, transpose, value);
  constexpr u32 parameters = 4;
  constexpr u64 room = (cmd_slots - parameters) * sizeof(u64);
  const bool large = value && __osw_checked_bytes(count, 2 * 3 * sizeof *value) > room;
  push_with_blobs<glUniformMatrix2x3fv_op>(state, large ? 1u << 3 : 0, location, count, transpose, value);
}
