#include "support/pixel_state.h"

namespace pixel_state {

namespace {

GLint& value_at(const driver::live_call& live, u64 name) {
  return all()[{live.what.context, name}];
}

void answer_integer(driver::live_call& live) {
  *reinterpret_cast<GLint*>(live.what.arguments[1]) = value_at(live, live.what.arguments[0]);
}

void answer_flag(driver::live_call& live) {
  *reinterpret_cast<GLboolean*>(live.what.arguments[1]) =
      static_cast<GLboolean>(value_at(live, live.what.arguments[0]));
}

void set_store(driver::live_call& live) {
  value_at(live, live.what.arguments[0]) = static_cast<GLint>(live.what.arguments[1]);
}

void bind_buffer(driver::live_call& live) {
  const GLenum query =
      live.what.arguments[0] == GL_PIXEL_PACK_BUFFER ? GL_PIXEL_PACK_BUFFER_BINDING : GL_PIXEL_UNPACK_BUFFER_BINDING;
  value_at(live, query) = static_cast<GLint>(live.what.arguments[1]);
}

}  // namespace

values& all() {
  static values kept;
  return kept;
}

void serve(const library::rendering& rendered) {
  driver::on_call<glGetIntegerv_op>(answer_integer);
  driver::on_call<glGetBooleanv_op>(answer_flag);
  driver::on_call<glPixelStorei_op>(set_store);
  driver::on_call<glBindBuffer_op>(bind_buffer);
  set(rendered, GL_PACK_ALIGNMENT, 4);
  set(rendered, GL_UNPACK_ALIGNMENT, 4);
}

void set(const library::rendering& rendered, GLenum name, GLint value) {
  for (HGLRC child : rendered.children) all()[{child, name}] = value;
}

}  // namespace pixel_state
