// Reads of what only the parts hold: no mirror call, and always through the workers.
#include "threaded/encoders.h"

template <>
void encode<glReadPixels_op>(GLint x, GLint y, GLsizei width, GLsizei height, GLenum format, GLenum type,
                             void* pixels) {
  push<glReadPixels_op>(__osw_fetch_thread_state(), x, y, width, height, format, type, pixels);
}

template <>
void encode<glGetBufferSubData_op>(GLenum target, GLintptr offset, GLsizeiptr size, void* data) {
  push<glGetBufferSubData_op>(__osw_fetch_thread_state(), target, offset, size, data);
}
