#include "threaded/pixel_store.h"

#include "threaded/encoders.h"

namespace {

bool is_refused(GLenum pname, i32 value) {
  if (pname == GL_PACK_ALIGNMENT || pname == GL_UNPACK_ALIGNMENT) {
    return value != 1 && value != 2 && value != 4 && value != 8;
  }
  return value < 0;
}

// As GL converts it, without leaving what an integer can hold.
i32 truncated(GLfloat value) {
  constexpr GLfloat limit = 2147483648.0f;
  if (!(value > -limit && value < limit)) return value > 0 ? 0x7FFFFFFF : -1;
  return static_cast<i32>(value);
}

template <class Op, class T>
void encode_store(GLenum pname, T value, i32 kept) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  mirror<Op>(state, pname, value);
  __osw_set_pixel_store(state, &state->glrc->client_state, pname, kept);
  push<Op>(state, pname, value);
}

}  // namespace

void __osw_set_pixel_store(__osw_thread_state* state, __osw_client_state*, GLenum pname, i32 value) {
  for (const pixel_store_field& field : pixel_store_fields) {
    const bool pack = pname == field.pack;
    if (!pack && pname != field.unpack) continue;
    if (field.number && is_refused(pname, value)) return;
    set_field(pack ? &state->glrc->pack_store : &state->glrc->unpack_store, field, value);
  }
}

void glPixelStoref_op::encode(GLenum pname, GLfloat value) {
  encode_store<glPixelStoref_op>(pname, value, truncated(value));
}

void glPixelStorei_op::encode(GLenum pname, GLint value) {
  encode_store<glPixelStorei_op>(pname, value, value);
}
