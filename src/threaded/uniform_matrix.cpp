// The one matrix uniform that is unlike the others.
#include "threaded/encoders.h"

// Hands the workers the application's own pointer, and for many matrices also the right to free it.
void glUniformMatrix2x3fv_op::encode(GLint location, GLsizei count, GLboolean transpose, const GLfloat* value) {
  using self = glUniformMatrix2x3fv_op;
  __osw_thread_state* state = __osw_fetch_thread_state();
  mirror<self>(state, location, count, transpose, value);
  constexpr u64 room = (cmd_slots - parameter_count<self>)*sizeof(u64);
  const bool large = value && bytes_of<self>(payload(location, count, transpose, value)) > room;
  push_with_blobs<self>(state, large ? array_blob<self> : 0, location, count, transpose, value);
}
