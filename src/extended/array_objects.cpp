// Array objects on the threaded path: which one is bound, and the calls that set what stands behind attributes, of the
// one that is bound or of one that is named.
#include "extended/array_notes.h"
#include "threaded/encoders.h"

namespace {

template <class Op, class... Parameters>
void send(__osw_thread_state* state, Parameters... arguments) {
  mirror<Op>(state, arguments...);
  push<Op>(state, arguments...);
}

// Sends a call that `note` has noted of the object that is bound, or of the one that it names.
template <class Op, class Note, class... Parameters>
void send_noted(Note note, Parameters... arguments) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  note(array_object_in_force(state));
  send<Op>(state, arguments...);
}
template <class Op, class Note, class... Parameters>
void send_noted_of(GLuint name, Note note, Parameters... arguments) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  note(array_object_named(state, name));
  send<Op>(state, name, arguments...);
}

// Several bindings at once: without an array of names there is none at any of them.
void note_vertex_buffers(array_object* object, GLuint first, GLsizei count, const GLuint* buffers) {
  for (GLsizei i = 0; i < count && first < max_attributes; ++i, ++first) {
    note_vertex_buffer(object, first, buffers ? buffers[i] : 0);
  }
}

}  // namespace

void changed<glBindVertexArray_op>::encode(GLuint array) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  state->glrc->arrays.current = array_object_named(state, array);
  send<changed>(state, array);
}

void changed<glDeleteVertexArrays_op>::encode(GLsizei n, const GLuint* arrays) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  for (GLsizei i = 0; arrays && i < n; ++i) delete_array_object(&state->glrc->arrays, arrays[i]);
  encode_copied<changed, void>(n, arrays);
}

void glBindVertexBuffer_op::encode(GLuint bindingindex, GLuint buffer, GLintptr offset, GLsizei stride) {
  const auto note = [=](array_object* object) { note_vertex_buffer(object, bindingindex, buffer); };
  send_noted<glBindVertexBuffer_op>(note, bindingindex, buffer, offset, stride);
}

void glBindVertexBuffers_op::encode(GLuint first, GLsizei count, const GLuint* buffers, const GLintptr* offsets,
                                    const GLsizei* strides) {
  note_vertex_buffers(array_object_in_force(__osw_fetch_thread_state()), first, count, buffers);
  encode_copied<glBindVertexBuffers_op, void>(first, count, buffers, offsets, strides);
}

void glVertexAttribFormat_op::encode(GLuint attribindex, GLint size, GLenum type, GLboolean normalized,
                                     GLuint relativeoffset) {
  const auto note = [=](array_object* object) { note_attribute_format(object, attribindex); };
  send_noted<glVertexAttribFormat_op>(note, attribindex, size, type, normalized, relativeoffset);
}

void glVertexAttribIFormat_op::encode(GLuint attribindex, GLint size, GLenum type, GLuint relativeoffset) {
  const auto note = [=](array_object* object) { note_attribute_format(object, attribindex); };
  send_noted<glVertexAttribIFormat_op>(note, attribindex, size, type, relativeoffset);
}

void glVertexAttribLFormat_op::encode(GLuint attribindex, GLint size, GLenum type, GLuint relativeoffset) {
  const auto note = [=](array_object* object) { note_attribute_format(object, attribindex); };
  send_noted<glVertexAttribLFormat_op>(note, attribindex, size, type, relativeoffset);
}

void glVertexAttribBinding_op::encode(GLuint attribindex, GLuint bindingindex) {
  const auto note = [=](array_object* object) { note_attribute_binding(object, attribindex, bindingindex); };
  send_noted<glVertexAttribBinding_op>(note, attribindex, bindingindex);
}

void glVertexBindingDivisor_op::encode(GLuint bindingindex, GLuint divisor) {
  const auto note = [=](array_object* object) { note_binding_divisor(object, bindingindex, divisor); };
  send_noted<glVertexBindingDivisor_op>(note, bindingindex, divisor);
}

void glEnableVertexArrayAttrib_op::encode(GLuint vaobj, GLuint index) {
  const auto note = [=](array_object* object) { note_attribute_switch(object, index, true); };
  send_noted_of<glEnableVertexArrayAttrib_op>(vaobj, note, index);
}

void glDisableVertexArrayAttrib_op::encode(GLuint vaobj, GLuint index) {
  const auto note = [=](array_object* object) { note_attribute_switch(object, index, false); };
  send_noted_of<glDisableVertexArrayAttrib_op>(vaobj, note, index);
}

void glVertexArrayElementBuffer_op::encode(GLuint vaobj, GLuint buffer) {
  const auto note = [=](array_object* object) { object->element_buffer = buffer; };
  send_noted_of<glVertexArrayElementBuffer_op>(vaobj, note, buffer);
}

void glVertexArrayVertexBuffer_op::encode(GLuint vaobj, GLuint bindingindex, GLuint buffer, GLintptr offset,
                                          GLsizei stride) {
  const auto note = [=](array_object* object) { note_vertex_buffer(object, bindingindex, buffer); };
  send_noted_of<glVertexArrayVertexBuffer_op>(vaobj, note, bindingindex, buffer, offset, stride);
}

void glVertexArrayVertexBuffers_op::encode(GLuint vaobj, GLuint first, GLsizei count, const GLuint* buffers,
                                           const GLintptr* offsets, const GLsizei* strides) {
  note_vertex_buffers(array_object_named(__osw_fetch_thread_state(), vaobj), first, count, buffers);
  encode_copied<glVertexArrayVertexBuffers_op, void>(vaobj, first, count, buffers, offsets, strides);
}

void glVertexArrayAttribFormat_op::encode(GLuint vaobj, GLuint attribindex, GLint size, GLenum type,
                                          GLboolean normalized, GLuint relativeoffset) {
  const auto note = [=](array_object* object) { note_attribute_format(object, attribindex); };
  send_noted_of<glVertexArrayAttribFormat_op>(vaobj, note, attribindex, size, type, normalized, relativeoffset);
}

void glVertexArrayAttribIFormat_op::encode(GLuint vaobj, GLuint attribindex, GLint size, GLenum type,
                                           GLuint relativeoffset) {
  const auto note = [=](array_object* object) { note_attribute_format(object, attribindex); };
  send_noted_of<glVertexArrayAttribIFormat_op>(vaobj, note, attribindex, size, type, relativeoffset);
}

void glVertexArrayAttribLFormat_op::encode(GLuint vaobj, GLuint attribindex, GLint size, GLenum type,
                                           GLuint relativeoffset) {
  const auto note = [=](array_object* object) { note_attribute_format(object, attribindex); };
  send_noted_of<glVertexArrayAttribLFormat_op>(vaobj, note, attribindex, size, type, relativeoffset);
}

void glVertexArrayAttribBinding_op::encode(GLuint vaobj, GLuint attribindex, GLuint bindingindex) {
  const auto note = [=](array_object* object) { note_attribute_binding(object, attribindex, bindingindex); };
  send_noted_of<glVertexArrayAttribBinding_op>(vaobj, note, attribindex, bindingindex);
}

void glVertexArrayBindingDivisor_op::encode(GLuint vaobj, GLuint bindingindex, GLuint divisor) {
  const auto note = [=](array_object* object) { note_binding_divisor(object, bindingindex, divisor); };
  send_noted_of<glVertexArrayBindingDivisor_op>(vaobj, note, bindingindex, divisor);
}
