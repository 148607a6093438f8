// glArrayElement on the threaded path: the immediate mode calls that it is unrolled into.
#include <algorithm>
#include <string>

#include "pipeline/push.h"
#include "support/op_rows.h"
#include "support/received.h"

namespace {

struct array_element_test : library::process_test {
  void SetUp() override {
    library::start();
    received::watch(library::start_rendering());
  }
};

const __osw_cmd_queue* own_queue() {
  return __osw_fetch_thread_state()->cmd_queue;
}

void begin() {
  received::wait_for_parts();
  received::clear();
}

struct component {
  GLenum type;
  const char* letters;  // in the names of calls
  u32 bytes;
};

constexpr component components[] = {
    {GL_BYTE, "b", 1},      {GL_UNSIGNED_BYTE, "ub", 1}, {GL_SHORT, "s", 2}, {GL_UNSIGNED_SHORT, "us", 2},
    {GL_INT, "i", 4},       {GL_UNSIGNED_INT, "ui", 4},  {GL_FLOAT, "f", 4}, {GL_DOUBLE, "d", 8},
    {GL_HALF_FLOAT, "h", 2}};

int op_named(const std::string& name) {
  const auto found = std::ranges::find_if(ops::all(), [&](const ops::row& row) { return name == row.name; });
  return found == ops::all().end() ? -1 : found->op;
}

// One row of what an array's elements are sent by: a stem, the letters that it takes, and the sizes.
struct array_calls {
  const char* stem;
  const char* letters;  // separated by blanks
  GLint smallest;       // sizes that stand in the name; 0 for none
  GLint largest;
  u32 fixed_size;   // components where the name has no size
  bool has_target;  // an argument before the vector
};

bool takes(const array_calls& calls, const char* letters) {
  return (" " + std::string(calls.letters) + " ").find(" " + std::string(letters) + " ") != std::string::npos;
}

std::string call_name(const array_calls& calls, GLint size, const char* letters) {
  return std::string(calls.stem) + (calls.smallest ? std::to_string(size) : "") + letters + "v";
}

// Draws element 2 of the array that has just been set up and enabled.
void check_element(const array_calls& calls, GLint size, const component& type, const std::vector<u8>& memory) {
  const bool known =
      takes(calls, type.letters) && (!calls.smallest || (size >= calls.smallest && size <= calls.largest));
  const std::string name = call_name(calls, size, type.letters);
  SCOPED_TRACE(testing::Message() << name << (known ? "" : ", which there is not"));
  const int op = known ? op_named(name) : -1;
  ASSERT_EQ(op >= 0, known);
  const u32 elements = calls.smallest ? static_cast<u32>(size) : calls.fixed_size;
  const u32 bytes = elements * type.bytes;
  const u32 vector = calls.has_target ? 1 : 0;
  received::forget_readers();
  if (known) received::read(op, received::bytes_at(vector, bytes));
  begin();
  const u32 waits = own_queue()->send_sync_count;
  osw_glArrayElement(2);
  EXPECT_EQ(own_queue()->send_sync_count, waits + 1);
  ASSERT_EQ(received::of_app().size(), known ? 2u : 1u);
  EXPECT_EQ(received::of_app()[0].what, driver::expect<glArrayElement_op>(2));
  const std::vector<u8> element(memory.begin() + 2 * 40, memory.begin() + 2 * 40 + bytes);
  received::for_each_part([&](const received::calls& logged) {
    ASSERT_EQ(logged.size(), known ? 1u : 0u);
    if (!known) return;
    EXPECT_EQ(logged[0].what.op, op);
    EXPECT_EQ(logged[0].memory, element);
  });
}

// All sizes from 1 to 4 and all types. `set` sets the array's pointer, with a stride of 40.
void check_array(const array_calls& calls, const std::function<void(GLint, GLenum, const void*)>& set) {
  std::vector<u8> memory(40 * 3);
  for (std::size_t i = 0; i < memory.size(); ++i) memory[i] = static_cast<u8>(i + 1);
  for (GLint size = 1; size <= 4; ++size) {
    for (const component& type : components) {
      set(size, type.type, memory.data());
      check_element(calls, size, type, memory);
    }
  }
}

TEST_F(array_element_test, vertices) {
  osw_glEnableClientState(GL_VERTEX_ARRAY);
  check_array({"glVertex", "s i f d", 2, 4, 0, false},
              [](GLint size, GLenum type, const void* at) { osw_glVertexPointer(size, type, 40, at); });
}

TEST_F(array_element_test, normals) {
  osw_glEnableClientState(GL_NORMAL_ARRAY);
  check_array({"glNormal3", "b s i f d", 0, 0, 3, false},
              [](GLint, GLenum type, const void* at) { osw_glNormalPointer(type, 40, at); });
}

TEST_F(array_element_test, colors) {
  osw_glEnableClientState(GL_COLOR_ARRAY);
  check_array({"glColor", "b ub s us i ui f d", 3, 4, 0, false},
              [](GLint size, GLenum type, const void* at) { osw_glColorPointer(size, type, 40, at); });
}

TEST_F(array_element_test, color_indices) {
  osw_glEnableClientState(GL_INDEX_ARRAY);
  check_array({"glIndex", "ub s i f d", 0, 0, 1, false},
              [](GLint, GLenum type, const void* at) { osw_glIndexPointer(type, 40, at); });
}

TEST_F(array_element_test, texture_coordinates) {
  osw_glEnableClientState(GL_TEXTURE_COORD_ARRAY);
  check_array({"glMultiTexCoord", "s i f d", 1, 4, 0, true},
              [](GLint size, GLenum type, const void* at) { osw_glTexCoordPointer(size, type, 40, at); });
}

TEST_F(array_element_test, fog_coordinates) {
  osw_glEnableClientState(GL_FOG_COORD_ARRAY);
  check_array({"glFogCoord", "f d", 0, 0, 1, false},
              [](GLint, GLenum type, const void* at) { osw_glFogCoordPointer(type, 40, at); });
}

TEST_F(array_element_test, secondary_colors) {
  osw_glEnableClientState(GL_SECONDARY_COLOR_ARRAY);
  check_array({"glSecondaryColor3", "b ub s us i ui f d", 0, 0, 3, false},
              [](GLint size, GLenum type, const void* at) { osw_glSecondaryColorPointer(size, type, 40, at); });
}

TEST_F(array_element_test, attributes_of_one_to_three) {
  osw_glEnableVertexAttribArray(6);
  check_array({"glVertexAttrib", "s f d", 1, 3, 0, true}, [](GLint size, GLenum type, const void* at) {
    // Size 4 has more types, and a test of its own.
    osw_glVertexAttribPointer(6, size == 4 ? 5 : size, type, GL_FALSE, 40, at);
  });
}

TEST_F(array_element_test, attributes_of_four) {
  osw_glEnableVertexAttribArray(6);
  check_array({"glVertexAttrib4", "b ub s us i ui f d", 0, 0, 4, true},
              [](GLint, GLenum type, const void* at) { osw_glVertexAttribPointer(6, 4, type, GL_FALSE, 40, at); });
}

TEST_F(array_element_test, normalized_attributes) {
  osw_glEnableVertexAttribArray(6);
  check_array({"glVertexAttrib4N", "b ub s us i ui", 0, 0, 4, true},
              [](GLint, GLenum type, const void* at) { osw_glVertexAttribPointer(6, 4, type, GL_TRUE, 40, at); });
  const GLfloat values[3] = {};
  osw_glVertexAttribPointer(6, 3, GL_SHORT, GL_TRUE, 0, values);
  begin();
  osw_glArrayElement(0);
  received::expect_parts({});
}

TEST_F(array_element_test, targets_are_the_unit_and_the_attribute) {
  const GLfloat values[4] = {};
  osw_glClientActiveTexture(GL_TEXTURE4);
  osw_glTexCoordPointer(1, GL_FLOAT, 0, values);
  osw_glEnableClientState(GL_TEXTURE_COORD_ARRAY);
  osw_glVertexAttribPointer(9, 1, GL_FLOAT, GL_FALSE, 0, values);
  osw_glEnableVertexAttribArray(9);
  begin();
  osw_glArrayElement(1);
  received::for_each_part([](const received::calls& logged) {
    ASSERT_EQ(logged.size(), 2u);
    EXPECT_EQ(logged[0].what.arguments[0], u64{GL_TEXTURE4});
    EXPECT_EQ(logged[1].what.arguments[0], 9u);
  });
}

std::vector<int> ops_of(const received::calls& logged) {
  std::vector<int> found;
  for (const received::call& one : logged) found.push_back(one.what.op);
  return found;
}

TEST_F(array_element_test, calls_come_in_the_order_of_the_bits) {
  const GLfloat values[16] = {};
  osw_glVertexPointer(3, GL_FLOAT, 0, values);
  osw_glColorPointer(3, GL_FLOAT, 0, values);
  osw_glNormalPointer(GL_FLOAT, 0, values);
  osw_glEdgeFlagPointer(0, values);
  for (GLenum array : {GL_EDGE_FLAG_ARRAY, GL_NORMAL_ARRAY, GL_COLOR_ARRAY, GL_VERTEX_ARRAY}) {
    osw_glEnableClientState(array);
  }
  begin();
  osw_glArrayElement(1);
  const std::vector<int> expected = {glVertex3fv_op::op, glColor3fv_op::op, glNormal3fv_op::op, glEdgeFlagv_op::op};
  received::for_each_part([&](const received::calls& logged) { EXPECT_EQ(ops_of(logged), expected); });
}

TEST_F(array_element_test, with_attribute_0_vertices_go_out_as_normals) {
  const GLfloat values[16] = {};
  osw_glVertexPointer(3, GL_FLOAT, 0, values);
  osw_glVertexAttribPointer(0, 4, GL_FLOAT, GL_FALSE, 0, values);
  osw_glEnableClientState(GL_VERTEX_ARRAY);
  osw_glEnableVertexAttribArray(0);
  begin();
  osw_glArrayElement(0);
  const std::vector<int> expected = {glNormal3fv_op::op, glVertexAttrib4fv_op::op};
  received::for_each_part([&](const received::calls& logged) { EXPECT_EQ(ops_of(logged), expected); });
}

TEST_F(array_element_test, without_arrays_in_memory_the_call_itself_goes_out) {
  osw_glBindBuffer(GL_ARRAY_BUFFER, 2);
  osw_glVertexPointer(3, GL_FLOAT, 0, nullptr);
  begin();
  const u32 waits = own_queue()->send_sync_count;
  osw_glArrayElement(5);
  osw_glEnableClientState(GL_VERTEX_ARRAY);
  osw_glArrayElement(6);
  EXPECT_EQ(own_queue()->send_sync_count, waits);
  received::expect_parts({driver::expect<glArrayElement_op>(5), driver::expect<glEnableClientState_op>(GL_VERTEX_ARRAY),
                          driver::expect<glArrayElement_op>(6)});
}

TEST_F(array_element_test, mixed_arrays_go_out_raw_and_make_the_application_wait) {
  const GLfloat values[16] = {};
  osw_glBindBuffer(GL_ARRAY_BUFFER, 2);
  osw_glVertexPointer(3, GL_FLOAT, 0, nullptr);
  osw_glBindBuffer(GL_ARRAY_BUFFER, 0);
  osw_glNormalPointer(GL_FLOAT, 0, values);
  osw_glEnableClientState(GL_VERTEX_ARRAY);
  osw_glEnableClientState(GL_NORMAL_ARRAY);
  begin();
  const u32 waits = own_queue()->send_sync_count;
  osw_glArrayElement(5);
  EXPECT_EQ(own_queue()->send_sync_count, waits + 1);
  received::expect_parts({driver::expect<glArrayElement_op>(5)});
}

}  // namespace
