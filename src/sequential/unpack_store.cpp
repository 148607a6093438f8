// What the application has set of the unpack state. A copy has to know how far its upload will reach, and may not ask.
#include "sequential/broadcast.h"
#include "wgl/records/glrc.h"

namespace {

void note(GLenum pname, i32 value) {
  __osw_glrc* glrc = __osw_fetch_thread_state()->glrc;
  __osw_pixel_store unused{};
  set_pixel_store(&unused, &glrc->unpack_store, pname, value);
}

}  // namespace

void glPixelStoref_op::broadcast(GLenum pname, GLfloat param) {
  note(pname, pixel_store_value(param));
  repeat_on_each_part<glPixelStoref_op>(pname, param);
}

void glPixelStorei_op::broadcast(GLenum pname, GLint param) {
  note(pname, param);
  repeat_on_each_part<glPixelStorei_op>(pname, param);
}

void glPushClientAttrib_op::broadcast(GLbitfield mask) {
  __osw_glrc* glrc = __osw_fetch_thread_state()->glrc;
  push_pixel_store(&glrc->unpack_stack, glrc->unpack_store, mask);
  repeat_on_each_part<glPushClientAttrib_op>(mask);
}

void glPopClientAttrib_op::broadcast() {
  __osw_glrc* glrc = __osw_fetch_thread_state()->glrc;
  pop_pixel_store(&glrc->unpack_stack, &glrc->unpack_store);
  repeat_on_each_part<glPopClientAttrib_op>();
}
