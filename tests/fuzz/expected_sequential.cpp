// The sequential path: each part receives the call that the application made, under the name that it used. Reads,
// copies and buffer mapping are unlike the rest.
#include "expectation.h"

namespace fuzz {

namespace {

constexpr int first_part = 0;

void expect_question(expectation* all, u64 target, GLenum name) {
  u64 anywhere = 0;
  expect_part(all, first_part, glGetBufferParameteriv_op::op, args({target, name, driver::bits_of(&anywhere)}),
              pointers::aimed);
}

// The driver here says of every buffer that it is mapped: the application then gets no block.
void expect_mapping(expectation* all, const ops::row& row, int body, const driver::argument_bits& arguments) {
  if (body == glMapBuffer_op::op) expect_question(all, arguments[0], GL_BUFFER_SIZE);
  expect_question(all, arguments[0], GL_BUFFER_MAPPED);
  expect_parts(all, row.op, arguments);
  all->knows_result = body == glUnmapBuffer_op::op;
}

}  // namespace

void expect_sequential(expectation* all, const ops::row& row, const driver::argument_bits& arguments) {
  if (row.is_driver_op) return;  // sent by the library alone
  const int body = row.base >= 0 ? row.base : row.op;
  switch (body) {
    case glReadPixels_op::op:
      for (int part = 0; part < all->parts; ++part) expect_read(all, part, arguments);
      return;
    case glMapBuffer_op::op:
    case glMapBufferRange_op::op:
    case glUnmapBuffer_op::op:
      return expect_mapping(all, row, body, arguments);
    default:
      if (is_copy(body)) return expect_sequential_copy(all, row, arguments);
      return expect_parts(all, row.op, arguments);
  }
}

}  // namespace fuzz
