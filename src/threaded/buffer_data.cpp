// Contents of the buffers that are bound.
#include "threaded/buffer_contents.h"

void glBufferData_op::encode(GLenum target, GLsizeiptr size, const void* data, GLenum usage) {
  define_contents<glBufferData_op>(target, size, data, usage);
}

void glBufferSubData_op::encode(GLenum target, GLintptr offset, GLsizeiptr size, const void* data) {
  replace_contents<glBufferSubData_op>(target, offset, size, data);
}
