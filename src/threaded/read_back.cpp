// Reads of what only the parts hold: no mirror call, and always through the workers.
#include "threaded/encoders.h"

void glReadPixels_op::encode(GLint x, GLint y, GLsizei width, GLsizei height, GLenum format, GLenum type,
                             void* pixels) {
  push<glReadPixels_op>(__osw_fetch_thread_state(), x, y, width, height, format, type, pixels);
}

void glGetBufferSubData_op::encode(GLenum target, GLintptr offset, GLsizeiptr size, void* data) {
  push<glGetBufferSubData_op>(__osw_fetch_thread_state(), target, offset, size, data);
}
