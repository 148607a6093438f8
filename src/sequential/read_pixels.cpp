#include "sequential/broadcast.h"
#include "sequential/parts/read_pixels_part.h"

void glReadPixels_op::broadcast(GLint x, GLint y, GLsizei width, GLsizei height, GLenum format, GLenum type,
                                void* pixels) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  __osw_for_each_part(
      state, [=](i32 part) { __osw_read_pixels_part(state, part, x, y, width, height, format, type, pixels); });
}
