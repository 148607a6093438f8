// The calls that set client arrays and vertex attributes, and what is bound.
#include "extended/array_notes.h"
#include "threaded/encoders.h"
#include "wgl/records/buffer_maps.h"

namespace {

template <class Op, class... Parameters>
void mirror_and_push(__osw_thread_state* state, Parameters... arguments) {
  mirror<Op>(state, arguments...);
  push<Op>(state, arguments...);
}

template <class Array>
noted_pointer client_pointer(const pointer_call& call) {
  return {Array::array, false, array_kind::floats, call.size, call.type, 0, call.stride, call.pointer};
}

template <class Op, class... Parameters>
void encode_client_pointer(Parameters... arguments) {
  using array = typename client_array_of<Op>::row;
  __osw_thread_state* state = __osw_fetch_thread_state();
  note_pointer(state, client_pointer<array>(described<array>(arguments...)));
  mirror_and_push<Op>(state, arguments...);
}

// The older names of these calls, which say how many elements there are.
template <class Op, class Array, class... Parameters>
void encode_counted_pointer(const pointer_call& call, Parameters... arguments) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  note_pointer(state, client_pointer<Array>(call));
  mirror_and_push<Op>(state, arguments...);
}

template <class Op, class... Parameters>
void encode_attribute_pointer(const noted_pointer& call, Parameters... arguments) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  note_pointer(state, call);
  mirror_and_push<Op>(state, arguments...);
}

template <class Op>
void encode_client_switch(GLenum array, bool on) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  note_client_switch(state, array, on);
  mirror_and_push<Op>(state, array);
}

template <class Op>
void encode_attribute_switch(GLuint index, bool on) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  note_attribute_switch(array_object_in_force(state), index, on);
  mirror_and_push<Op>(state, index);
}

template <class Op>
void encode_divisor(GLuint index, GLuint divisor) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  array_object* object = array_object_in_force(state);
  note_attribute_binding(object, index, index);
  note_binding_divisor(object, index, divisor);
  mirror_and_push<Op>(state, index, divisor);
}

}  // namespace

void changed<glVertexPointer_op>::encode(GLint size, GLenum type, GLsizei stride, const void* pointer) {
  encode_client_pointer<glVertexPointer_op>(size, type, stride, pointer);
}

void changed<glColorPointer_op>::encode(GLint size, GLenum type, GLsizei stride, const void* pointer) {
  encode_client_pointer<glColorPointer_op>(size, type, stride, pointer);
}

void changed<glTexCoordPointer_op>::encode(GLint size, GLenum type, GLsizei stride, const void* pointer) {
  encode_client_pointer<glTexCoordPointer_op>(size, type, stride, pointer);
}

void changed<glSecondaryColorPointer_op>::encode(GLint size, GLenum type, GLsizei stride, const void* pointer) {
  encode_client_pointer<glSecondaryColorPointer_op>(size, type, stride, pointer);
}

void changed<glNormalPointer_op>::encode(GLenum type, GLsizei stride, const void* pointer) {
  encode_client_pointer<glNormalPointer_op>(type, stride, pointer);
}

void changed<glIndexPointer_op>::encode(GLenum type, GLsizei stride, const void* pointer) {
  encode_client_pointer<glIndexPointer_op>(type, stride, pointer);
}

void changed<glFogCoordPointer_op>::encode(GLenum type, GLsizei stride, const void* pointer) {
  encode_client_pointer<glFogCoordPointer_op>(type, stride, pointer);
}

void changed<glEdgeFlagPointer_op>::encode(GLsizei stride, const void* pointer) {
  encode_client_pointer<glEdgeFlagPointer_op>(stride, pointer);
}

void changed<glVertexPointerEXT_op>::encode(GLint size, GLenum type, GLsizei stride, GLsizei count,
                                            const void* pointer) {
  encode_counted_pointer<glVertexPointerEXT_op, vertex_array>({size, type, stride, pointer}, size, type, stride, count,
                                                              pointer);
}

void changed<glColorPointerEXT_op>::encode(GLint size, GLenum type, GLsizei stride, GLsizei count,
                                           const void* pointer) {
  encode_counted_pointer<glColorPointerEXT_op, color_array>({size, type, stride, pointer}, size, type, stride, count,
                                                            pointer);
}

void changed<glTexCoordPointerEXT_op>::encode(GLint size, GLenum type, GLsizei stride, GLsizei count,
                                              const void* pointer) {
  encode_counted_pointer<glTexCoordPointerEXT_op, tex_coord_array>({size, type, stride, pointer}, size, type, stride,
                                                                   count, pointer);
}

void changed<glNormalPointerEXT_op>::encode(GLenum type, GLsizei stride, GLsizei count, const void* pointer) {
  encode_counted_pointer<glNormalPointerEXT_op, normal_array>({normal_array::size, type, stride, pointer}, type, stride,
                                                              count, pointer);
}

void changed<glIndexPointerEXT_op>::encode(GLenum type, GLsizei stride, GLsizei count, const void* pointer) {
  encode_counted_pointer<glIndexPointerEXT_op, index_array>({index_array::size, type, stride, pointer}, type, stride,
                                                            count, pointer);
}

void changed<glEdgeFlagPointerEXT_op>::encode(GLsizei stride, GLsizei count, const GLboolean* pointer) {
  encode_counted_pointer<glEdgeFlagPointerEXT_op, edge_flag_array>(
      {edge_flag_array::size, edge_flag_array::type, stride, pointer}, stride, count, pointer);
}

void changed<glVertexAttribPointer_op>::encode(GLuint index, GLint size, GLenum type, GLboolean normalized,
                                               GLsizei stride, const void* pointer) {
  encode_attribute_pointer<glVertexAttribPointer_op>(
      {index, true, array_kind::floats, size, type, normalized, stride, pointer}, index, size, type, normalized, stride,
      pointer);
}

void changed<glVertexAttribIPointer_op>::encode(GLuint index, GLint size, GLenum type, GLsizei stride,
                                                const void* pointer) {
  encode_attribute_pointer<changed>({index, true, array_kind::integers, size, type, 0, stride, pointer}, index, size,
                                    type, stride, pointer);
}

void glVertexAttribLPointer_op::encode(GLuint index, GLint size, GLenum type, GLsizei stride, const void* pointer) {
  encode_attribute_pointer<glVertexAttribLPointer_op>(
      {index, true, array_kind::doubles, size, type, 0, stride, pointer}, index, size, type, stride, pointer);
}

void changed<glEnableClientState_op>::encode(GLenum array) {
  encode_client_switch<glEnableClientState_op>(array, true);
}

void changed<glDisableClientState_op>::encode(GLenum array) {
  encode_client_switch<glDisableClientState_op>(array, false);
}

void changed<glEnableVertexAttribArray_op>::encode(GLuint index) {
  encode_attribute_switch<glEnableVertexAttribArray_op>(index, true);
}

void changed<glDisableVertexAttribArray_op>::encode(GLuint index) {
  encode_attribute_switch<glDisableVertexAttribArray_op>(index, false);
}

void changed<glVertexAttribDivisor_op>::encode(GLuint index, GLuint divisor) {
  encode_divisor<glVertexAttribDivisor_op>(index, divisor);
}

void changed<glVertexAttribDivisorARB_op>::encode(GLuint index, GLuint divisor) {
  encode_divisor<glVertexAttribDivisorARB_op>(index, divisor);
}

void changed<glBindBuffer_op>::encode(GLenum target, GLuint buffer) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  if (u32* binding = noted_binding(state, target)) *binding = buffer;
  mirror_and_push<glBindBuffer_op>(state, target, buffer);
}

void changed<glDeleteBuffers_op>::encode(GLsizei n, const GLuint* buffers) {
  const __osw_thread_state* state = __osw_fetch_thread_state();
  note_deleted_buffers(state, n, buffers);
  drop_buffer_maps(state->current_hglrc, n, buffers);
  encode_copied<changed, void>(n, buffers);
}
