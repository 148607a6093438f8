// Contents of buffers by their names.
#include "threaded/buffer_contents.h"

void glNamedBufferSubData_op::encode(GLuint buffer, GLintptr offset, GLsizeiptr size, const void* data) {
  replace_contents<glNamedBufferSubData_op>(buffer, offset, size, data);
}
