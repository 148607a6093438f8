// Pixel maps of integers, where an unpack buffer is bound: an offset in it is no address.
#include "threaded/encoders.h"
#include "wgl/records/glrc.h"

namespace {

template <class Op, class Value>
void encode_map(GLenum map, GLsizei size, const Value* values) {
  const bool has_buffer = __osw_fetch_thread_state()->glrc->client_state.unpack_buffer != 0;
  if (has_buffer) return encode_plain<Op, void>(map, size, values);
  encoder<Op>()(map, size, values);
}

}  // namespace

void changed<glPixelMapuiv_op>::encode(GLenum map, GLsizei size, const GLuint* values) {
  encode_map<glPixelMapuiv_op>(map, size, values);
}

void changed<glPixelMapusv_op>::encode(GLenum map, GLsizei size, const GLushort* values) {
  encode_map<glPixelMapusv_op>(map, size, values);
}
