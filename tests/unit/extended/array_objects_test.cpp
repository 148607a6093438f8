// Array objects on the threaded path: each has its own arrays and element buffer, and what is known of the client state
// follows all calls that change it.
#include <algorithm>

#include "support/allocation.h"
#include "support/waiting_calls.h"
#include "wgl/records/glrc.h"

namespace {

using namespace waiting;

struct array_objects_test : two_parts_test {};

// The calls since begin() were so many commands, of which nobody was waited for.
void expect_commands(u32 count) {
  EXPECT_EQ(*own_queue()->fill_count, count);
}

bool draws_and_waits() {
  return waits([] { osw_glDrawArrays(GL_POINTS, 0, 2); });
}

// The argument of the first call of an op that a part has received.
u64 received_argument(int op, std::size_t argument) {
  received::wait_for_parts();
  for (const received::call& one : received::of_part(1)) {
    if (one.what.op == op) return one.what.arguments[argument];
  }
  ADD_FAILURE() << "no such call";
  return 0;
}

bool is_captured(const void* memory) {
  begin();
  osw_glDrawArrays(GL_POINTS, 0, 2);
  return received_argument(glVertexPointer_op::op, 3) != driver::bits_of(memory);
}

void set_attribute_in_buffer(GLuint object, GLuint buffer) {
  osw_glBindVertexArray(object);
  osw_glBindBuffer(GL_ARRAY_BUFFER, buffer);
  osw_glVertexAttribPointer(0, 3, GL_FLOAT, 0, 0, offset(24));
  osw_glEnableVertexAttribArray(0);
}

TEST_F(array_objects_test, two_objects_have_their_own_arrays_and_nobody_waits) {
  begin();
  set_attribute_in_buffer(1, 11);
  set_attribute_in_buffer(2, 12);
  osw_glBindVertexArray(1);
  osw_glDrawArrays(GL_TRIANGLES, 0, 3);
  osw_glBindVertexArray(2);
  osw_glDrawArrays(GL_TRIANGLES, 3, 3);
  expect_commands(12);
  std::vector<driver::call> expected;
  for (const GLuint object : {1u, 2u}) {
    expected.push_back(driver::expect<glBindVertexArray_op>(object));
    expected.push_back(driver::expect<glBindBuffer_op>(GL_ARRAY_BUFFER, object + 10));
    expected.push_back(driver::expect<glVertexAttribPointer_op>(0u, 3, GL_FLOAT, GLboolean{0}, 0, offset(24)));
    expected.push_back(driver::expect<glEnableVertexAttribArray_op>(0u));
  }
  for (const GLuint object : {1u, 2u}) {
    expected.push_back(driver::expect<glBindVertexArray_op>(object));
    expected.push_back(driver::expect<glDrawArrays_op>(GL_TRIANGLES, object == 1 ? 0 : 3, 3));
  }
  received::expect_parts(expected);
}

TEST_F(array_objects_test, client_arrays_are_those_of_the_first_object_alone) {
  GLfloat memory[6] = {};
  osw_glVertexPointer(3, GL_FLOAT, 0, memory);
  osw_glEnableClientState(GL_VERTEX_ARRAY);
  set_attribute_in_buffer(1, 11);
  begin();
  osw_glDrawArrays(GL_POINTS, 0, 2);
  expect_commands(1);
  received::expect_parts({driver::expect<glDrawArrays_op>(GL_POINTS, 0, 2)});
  osw_glBindVertexArray(0);
  EXPECT_TRUE(is_captured(memory));
}

TEST_F(array_objects_test, elements_lie_in_the_object_s_own_buffer) {
  osw_glBindVertexArray(1);
  osw_glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, 7);
  osw_glBindVertexArray(0);
  osw_glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, 0);
  osw_glBindVertexArray(1);
  begin();
  osw_glDrawElements(GL_TRIANGLES, 3, GL_UNSIGNED_INT, offset(12));
  expect_commands(1);
  received::expect_parts({driver::expect<glDrawElements_op>(GL_TRIANGLES, 3, GL_UNSIGNED_INT, offset(12))});
}

// Draws three elements. Result: whether they were taken from memory.
bool takes_elements_from_memory() {
  const GLushort elements[] = {0, 1, 2};
  begin();
  osw_glDrawElements(GL_TRIANGLES, 3, GL_UNSIGNED_SHORT, elements);
  return received_argument(glDrawElements_op::op, 3) != driver::bits_of(&elements[0]);
}

TEST_F(array_objects_test, an_object_that_is_deleted_while_bound_gives_way_to_the_first) {
  const GLuint object = 1;
  osw_glBindVertexArray(object);
  osw_glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, 7);
  EXPECT_FALSE(takes_elements_from_memory());
  osw_glDeleteVertexArrays(1, &object);
  EXPECT_TRUE(takes_elements_from_memory());
  osw_glBindVertexArray(object);
  EXPECT_TRUE(takes_elements_from_memory());
}

TEST_F(array_objects_test, a_buffer_that_is_deleted_is_bound_no_more) {
  const GLuint buffers[] = {0, 7, 8};
  GLfloat memory[6] = {};
  osw_glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, 7);
  osw_glBindBuffer(GL_ARRAY_BUFFER, 8);
  osw_glBindBuffer(GL_PIXEL_UNPACK_BUFFER, 8);
  osw_glDeleteBuffers(3, buffers);
  EXPECT_TRUE(takes_elements_from_memory());
  EXPECT_EQ(__osw_fetch_thread_state()->glrc->client_state.unpack_buffer, 0u);
  osw_glVertexPointer(3, GL_FLOAT, 0, memory);
  osw_glEnableClientState(GL_VERTEX_ARRAY);
  EXPECT_TRUE(is_captured(memory));
}

TEST_F(array_objects_test, an_array_whose_buffer_was_deleted_is_waited_for) {
  const GLuint buffer = 11;
  osw_glBindBuffer(GL_ARRAY_BUFFER, buffer);
  osw_glVertexPointer(3, GL_FLOAT, 0, nullptr);
  osw_glEnableClientState(GL_VERTEX_ARRAY);
  EXPECT_FALSE(draws_and_waits());
  osw_glDeleteBuffers(1, &buffer);
  EXPECT_TRUE(draws_and_waits());
}

TEST_F(array_objects_test, an_object_s_element_buffer_may_be_set_by_its_name) {
  osw_glVertexArrayElementBuffer(5, 7);
  EXPECT_TRUE(takes_elements_from_memory());
  osw_glBindVertexArray(5);
  EXPECT_FALSE(takes_elements_from_memory());
}

TEST_F(array_objects_test, attributes_may_share_a_binding) {
  set_attribute_in_buffer(3, 11);
  osw_glVertexAttribFormat(1, 2, GL_FLOAT, 0, 12);
  osw_glVertexAttribBinding(1, 0);
  osw_glEnableVertexAttribArray(1);
  EXPECT_FALSE(draws_and_waits());
  osw_glVertexAttribBinding(1, 6);
  EXPECT_TRUE(draws_and_waits());
  osw_glBindVertexBuffer(6, 12, 0, 8);
  EXPECT_FALSE(draws_and_waits());
  osw_glVertexArrayVertexBuffer(3, 6, 0, 0, 8);
  EXPECT_TRUE(draws_and_waits());
  osw_glDisableVertexArrayAttrib(3, 1);
  EXPECT_FALSE(draws_and_waits());
}

TEST_F(array_objects_test, several_bindings_change_at_once) {
  set_attribute_in_buffer(3, 11);
  osw_glVertexAttribFormat(1, 2, GL_FLOAT, 0, 12);
  osw_glVertexAttribBinding(1, 6);
  osw_glEnableVertexAttribArray(1);
  EXPECT_TRUE(draws_and_waits());
  const GLuint names[] = {11, 12};
  const GLintptr offsets[] = {0, 8};
  const GLsizei strides[] = {8, 8};
  osw_glBindVertexBuffers(5, 2, names, offsets, strides);
  EXPECT_FALSE(draws_and_waits());
  osw_glVertexArrayVertexBuffers(3, 5, 2, nullptr, nullptr, nullptr);
  EXPECT_TRUE(draws_and_waits());
  osw_glBindVertexBuffers(6, 1, names, offsets, strides);
  EXPECT_FALSE(draws_and_waits());
  osw_glBindVertexBuffers(30, 1000, nullptr, nullptr, nullptr);
  EXPECT_FALSE(draws_and_waits());
}

TEST_F(array_objects_test, without_memory_for_an_object_its_draws_are_waited_for) {
  allocation::fail_call(1);
  osw_glBindVertexArray(9);
  allocation::stop_failing();
  EXPECT_TRUE(draws_and_waits());
  osw_glBindVertexArray(0);
  EXPECT_FALSE(draws_and_waits());
  EXPECT_EQ(library::reports(), std::vector<std::string>{"OGLSPANWrapper Error: no memory for a vertex array object: "
                                                         "draws from it are waited for\n"});
}

TEST_F(array_objects_test, a_core_context_reads_nothing_of_the_program_s_memory) {
  __osw_fetch_thread_state()->glrc->is_core = 1;
  osw_glEnableVertexAttribArray(0);
  EXPECT_FALSE(draws_and_waits());
  const GLushort elements[] = {0, 1, 2};
  const GLuint figures[] = {3, 1, 0, 0};
  begin();
  osw_glDrawElements(GL_TRIANGLES, 3, GL_UNSIGNED_SHORT, elements);
  osw_glDrawArraysIndirect(GL_TRIANGLES, figures);
  expect_commands(2);
  received::expect_parts({driver::expect<glDrawElements_op>(GL_TRIANGLES, 3, GL_UNSIGNED_SHORT, elements),
                          driver::expect<glDrawArraysIndirect_op>(GL_TRIANGLES, figures)});
}

// ---- what else sets arrays ----

TEST_F(array_objects_test, arrays_come_back_with_the_client_attributes) {
  GLfloat memory[6] = {};
  osw_glVertexPointer(3, GL_FLOAT, 0, memory);
  osw_glEnableClientState(GL_VERTEX_ARRAY);
  osw_glBindBuffer(GL_PIXEL_UNPACK_BUFFER, 5);
  osw_glPixelStorei(GL_UNPACK_ROW_LENGTH, 9);
  osw_glPushClientAttrib(GL_CLIENT_ALL_ATTRIB_BITS);
  osw_glBindBuffer(GL_PIXEL_UNPACK_BUFFER, 0);
  osw_glPixelStorei(GL_UNPACK_ROW_LENGTH, 0);
  osw_glDisableClientState(GL_VERTEX_ARRAY);
  set_attribute_in_buffer(4, 11);
  EXPECT_FALSE(draws_and_waits());
  osw_glPopClientAttrib();
  EXPECT_TRUE(is_captured(memory));
  const __osw_glrc& glrc = *__osw_fetch_thread_state()->glrc;
  EXPECT_EQ(glrc.client_state.unpack_buffer, 5u);
  EXPECT_EQ(glrc.client_state.array_buffer, 0u);
  EXPECT_EQ(glrc.unpack_store.row_length, 9);
}

TEST_F(array_objects_test, only_what_was_pushed_comes_back) {
  GLfloat memory[6] = {};
  osw_glPixelStorei(GL_UNPACK_ROW_LENGTH, 9);
  osw_glPushClientAttrib(GL_CLIENT_PIXEL_STORE_BIT);
  osw_glPixelStorei(GL_UNPACK_ROW_LENGTH, 0);
  osw_glVertexPointer(3, GL_FLOAT, 0, memory);
  osw_glEnableClientState(GL_VERTEX_ARRAY);
  osw_glPopClientAttrib();
  osw_glPopClientAttrib();
  EXPECT_TRUE(is_captured(memory));
  EXPECT_EQ(__osw_fetch_thread_state()->glrc->unpack_store.row_length, 9);
}

TEST_F(array_objects_test, a_pop_finds_the_bindings_that_gl_has) {
  osw_glBindBuffer(GL_ARRAY_BUFFER, 5);
  osw_glPushClientAttrib(GL_CLIENT_VERTEX_ARRAY_BIT);
  driver::on_call<glGetIntegerv_op>([](driver::live_call& call) {
    if (call.what.arguments[0] == GL_ARRAY_BUFFER_BINDING) *reinterpret_cast<GLint*>(call.what.arguments[1]) = 0;
  });
  osw_glPopClientAttrib();
  EXPECT_EQ(__osw_fetch_thread_state()->glrc->client_state.array_buffer, 0u);
}

TEST_F(array_objects_test, without_memory_for_a_push_draws_are_waited_for_after_the_pop) {
  allocation::fail_call(1);
  osw_glPushClientAttrib(GL_CLIENT_ALL_ATTRIB_BITS);
  allocation::stop_failing();
  EXPECT_FALSE(draws_and_waits());
  osw_glPopClientAttrib();
  EXPECT_TRUE(draws_and_waits());
  EXPECT_EQ(library::reports(),
            std::vector<std::string>{"OGLSPANWrapper Error: no memory for what glPushClientAttrib saves\n"});
}

TEST_F(array_objects_test, interleaved_arrays_are_captured) {
  std::vector<u8> memory(2 * 24);
  for (std::size_t i = 0; i < memory.size(); ++i) memory[i] = static_cast<u8>(i);
  osw_glEnableClientState(GL_INDEX_ARRAY);
  osw_glInterleavedArrays(GL_T2F_C4UB_V3F, 0, memory.data());
  begin();
  osw_glDrawArrays(GL_POINTS, 0, 2);
  received::wait_for_parts();
  const u64 block = received_argument(glTexCoordPointer_op::op, 3);
  EXPECT_NE(block, driver::bits_of(memory.data()));
  const auto at = [](u64 address) { return reinterpret_cast<const void*>(address); };
  const auto of_memory = [&](u32 bytes) { return static_cast<const void*>(memory.data() + bytes); };
  received::expect_parts({driver::expect<glVertexPointer_op>(3, GL_FLOAT, 24, at(block + 12)),
                          driver::expect<glColorPointer_op>(4, GL_UNSIGNED_BYTE, 24, at(block + 8)),
                          driver::expect<glTexCoordPointer_op>(2, GL_FLOAT, 24, at(block)),
                          driver::expect<glDrawArrays_op>(GL_POINTS, 0, 2),
                          driver::expect<glVertexPointer_op>(3, GL_FLOAT, 24, of_memory(12)),
                          driver::expect<glColorPointer_op>(4, GL_UNSIGNED_BYTE, 24, of_memory(8)),
                          driver::expect<glTexCoordPointer_op>(2, GL_FLOAT, 24, of_memory(0))});
}

TEST_F(array_objects_test, the_older_pointer_calls_set_the_same_arrays) {
  GLfloat memory[6] = {};
  begin();
  osw_glVertexPointerEXT(3, GL_FLOAT, 0, 2, memory);
  expect_commands(1);
  received::expect_parts({driver::expect<glVertexPointerEXT_op>(3, GL_FLOAT, 0, 2, memory)});
  osw_glEnableClientState(GL_VERTEX_ARRAY);
  EXPECT_TRUE(is_captured(memory));
}

TEST_F(array_objects_test, integer_attributes_are_captured_as_such) {
  GLint memory[4] = {};
  osw_glVertexAttribIPointer(3, 2, GL_INT, 0, memory);
  osw_glEnableVertexAttribArray(3);
  begin();
  osw_glDrawArrays(GL_POINTS, 0, 2);
  const u64 block = received_argument(glVertexAttribIPointer_op::op, 4);
  EXPECT_NE(block, driver::bits_of(&memory[0]));
  received::expect_parts(
      {driver::expect<glVertexAttribIPointer_op>(3u, 2, GL_INT, 0, reinterpret_cast<const void*>(block)),
       driver::expect<glDrawArrays_op>(GL_POINTS, 0, 2),
       driver::expect<glVertexAttribIPointer_op>(3u, 2, GL_INT, 0, memory)});
}

TEST_F(array_objects_test, what_a_capture_does_not_know_is_waited_for) {
  GLfloat memory[16] = {};
  osw_glVertexAttribPointer(1, 4, GL_FLOAT, 0, 0, memory);
  osw_glEnableVertexAttribArray(1);
  EXPECT_FALSE(draws_and_waits());
  osw_glVertexAttribDivisor(1, 1);
  EXPECT_TRUE(draws_and_waits());
  osw_glVertexAttribDivisor(1, 0);
  EXPECT_FALSE(draws_and_waits());
  osw_glVertexAttribFormat(1, 4, GL_FLOAT, 0, 16);
  EXPECT_TRUE(draws_and_waits());
  osw_glDisableVertexAttribArray(1);
  EXPECT_FALSE(draws_and_waits());
  osw_glVertexAttribPointer(20, 4, GL_FLOAT, 0, 0, memory);
  osw_glEnableVertexAttribArray(20);
  EXPECT_TRUE(draws_and_waits());
  osw_glDisableVertexAttribArray(20);
  osw_glEnableClientState(GL_WEIGHT_ARRAY_ARB);
  EXPECT_TRUE(draws_and_waits());
}

}  // namespace
