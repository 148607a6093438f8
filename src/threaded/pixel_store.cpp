#include "threaded/pixel_store.h"

#include "threaded/encoders.h"

namespace {

template <class Op, class T>
void encode_store(GLenum pname, T value, i32 kept) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  mirror<Op>(state, pname, value);
  __osw_set_pixel_store(state, &state->glrc->client_state, pname, kept);
  push<Op>(state, pname, value);
}

}  // namespace

void __osw_set_pixel_store(__osw_thread_state* state, __osw_client_state*, GLenum pname, i32 value) {
  set_pixel_store(&state->glrc->pack_store, &state->glrc->unpack_store, pname, value);
}

void glPixelStoref_op::encode(GLenum pname, GLfloat value) {
  encode_store<glPixelStoref_op>(pname, value, pixel_store_value(value));
}

void glPixelStorei_op::encode(GLenum pname, GLint value) {
  encode_store<glPixelStorei_op>(pname, value, value);
}
