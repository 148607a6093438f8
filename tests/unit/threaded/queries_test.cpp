// Queries on the threaded path: who answers them, at what width, and who has to wait.
#include "pipeline/push.h"
#include "startup/config/options.h"
#include "support/issuing.h"
#include "support/received.h"

namespace {

struct queries_on_the_own_context : library::process_test {
  void SetUp() override {
    library::start();
    rendered = library::start_rendering();
    received::watch(rendered);
  }
  library::rendering rendered;
};

struct queries_on_the_parts : library::process_test {
  void SetUp() override {
    library::start({.query_on_app_thread = false});
    rendered = library::start_rendering();
    received::watch(rendered);
  }
  library::rendering rendered;
};

// A thread of its own asks, so that the test's can hold a part back meanwhile.
struct queries_on_held_parts : issuing::pipeline_test {
  void SetUp() override {
    library::start({.parts = 4, .query_on_app_thread = false});
    asking = issuing::start_renderer();
    library::run(asking.thread, [this] { received::watch(asking.rendered); });
  }
  issuing::renderer asking;
};

const __osw_cmd_queue* own_queue() {
  return __osw_fetch_thread_state()->cmd_queue;
}

// Parts write in turn to one word of the application's.
template <class Value>
void store_at(u64 address, Value value) {
  relaxed_store(*reinterpret_cast<Value*>(address), value);
}

// Makes each part answer with 100 and its number, and the application's own context with 7.
void answer_through_pointer(const library::rendering& rendered, int op, u32 argument) {
  driver::on_call(driver::op_space::gl, op, [=](driver::live_call& live) {
    GLint value = 7;
    for (std::size_t part = 0; part < rendered.children.size(); ++part) {
      if (rendered.children[part] == live.what.context) value = 100 + static_cast<GLint>(part);
    }
    store_at(live.what.arguments[argument], value);
  });
}

TEST_F(queries_on_the_own_context, a_query_adds_no_record) {
  answer_through_pointer(rendered, glGetIntegerv_op::op, 1);
  const u32 filled = *own_queue()->fill_count;
  GLint value = 0;
  osw_glGetIntegerv(GL_MAX_TEXTURE_SIZE, &value);
  EXPECT_EQ(value, 7);
  EXPECT_EQ(*own_queue()->fill_count, filled);
  EXPECT_EQ(own_queue()->gl_sync_count[glGetIntegerv_op::op], 0u);
  received::expect_parts({});
}

TEST_F(queries_on_the_own_context, commands_that_wait_in_the_list_stay_there) {
  osw_glEnable(GL_BLEND);
  EXPECT_EQ(osw_glIsEnabled(GL_BLEND), 0);
  EXPECT_EQ(*own_queue()->fill_count, 1u);
  received::expect_app({driver::expect<glEnable_op>(GL_BLEND), driver::expect<glIsEnabled_op>(GL_BLEND)});
}

TEST_F(queries_on_the_parts, a_query_adds_one_record_and_waits_for_all_parts) {
  answer_through_pointer(rendered, glGetIntegerv_op::op, 1);
  GLint value = 0;
  osw_glGetIntegerv(GL_MAX_TEXTURE_SIZE, &value);
  const std::vector<driver::call> expected = {driver::expect<glGetIntegerv_op>(GL_MAX_TEXTURE_SIZE, &value)};
  for (int part = 0; part < received::parts(); ++part) {
    EXPECT_EQ(received::without_memory(received::of_part(part)), expected);
  }
  EXPECT_TRUE(value == 100 || value == 101) << value;
  EXPECT_EQ(own_queue()->gl_sync_count[glGetIntegerv_op::op], 1u);
  received::expect_app({});
}

TEST_F(queries_on_the_own_context, errors_of_the_parts_alone_are_not_seen) {
  received::answer_part(0, GL_INVALID_ENUM);
  received::answer_part(1, GL_INVALID_VALUE);
  EXPECT_EQ(osw_glGetError(), 0u);
}

TEST_F(queries_on_held_parts, an_error_is_that_of_the_part_which_answers_last) {
  received::answer_app(GL_OUT_OF_MEMORY);
  for (int part = 0; part < 4; ++part) received::answer_part(part, GL_INVALID_ENUM + static_cast<u64>(part));
  for (int last = 0; last < 4; ++last) {
    issuing::run_answered_last<glGetError_op>(
        asking, last, [last] { EXPECT_EQ(osw_glGetError(), GL_INVALID_ENUM + static_cast<GLenum>(last)); });
  }
}

TEST_F(queries_on_the_own_context, the_parts_meet_a_generated_name_at_its_bind) {
  driver::on_call<glGenTextures_op>([](driver::live_call& live) { store_at(live.what.arguments[1], GLuint{31}); });
  GLuint name = 0;
  osw_glGenTextures(1, &name);
  osw_glBindTexture(GL_TEXTURE_2D, name);
  EXPECT_EQ(name, 31u);
  received::expect_parts({driver::expect<glBindTexture_op>(GL_TEXTURE_2D, 31)});
}

TEST_F(queries_on_the_own_context, mipmaps_are_generated_on_the_own_context_alone) {
  osw_glGenerateMipmap(GL_TEXTURE_2D);
  received::expect_app({driver::expect<glGenerateMipmap_op>(GL_TEXTURE_2D)});
  received::expect_parts({});
}

TEST_F(queries_on_the_parts, mipmaps_are_generated_without_a_wait) {
  osw_glGenerateMipmap(GL_TEXTURE_2D);
  EXPECT_EQ(*own_queue()->fill_count, 1u);
  received::expect_parts({driver::expect<glGenerateMipmap_op>(GL_TEXTURE_2D)});
  received::expect_app({});
}

TEST_F(queries_on_the_parts, one_of_the_64_bit_query_results_stays_in_the_record) {
  const auto answer = [](driver::live_call& live) { store_at(live.what.arguments[2], u64{0x123456789ABC}); };
  driver::on_call<glGetQueryObjectui64v_op>(answer);
  driver::on_call<glGetQueryObjecti64v_op>(answer);
  driver::on_call<glGetQueryObjectui64vEXT_op>(answer);
  driver::on_call<glGetQueryObjecti64vEXT_op>(answer);
  u64 unsigned_value = 5, signed_value = 5, unsigned_ext = 5, signed_ext = 5;
  osw_glGetQueryObjectui64v(1, GL_QUERY_RESULT, reinterpret_cast<GLuint64*>(&unsigned_value));
  osw_glGetQueryObjecti64v(1, GL_QUERY_RESULT, reinterpret_cast<GLint64*>(&signed_value));
  osw_glGetQueryObjectui64vEXT(1, GL_QUERY_RESULT, reinterpret_cast<GLuint64*>(&unsigned_ext));
  osw_glGetQueryObjecti64vEXT(1, GL_QUERY_RESULT, reinterpret_cast<GLint64*>(&signed_ext));
  EXPECT_EQ(unsigned_value, 5u);
  EXPECT_EQ(signed_value, 0x123456789ABCu);
  EXPECT_EQ(unsigned_ext, 0x123456789ABCu);
  EXPECT_EQ(signed_ext, 0x123456789ABCu);
}

TEST_F(queries_on_the_own_context, the_64_bit_query_result_reaches_the_application) {
  driver::on_call<glGetQueryObjectui64v_op>([](driver::live_call& live) { store_at(live.what.arguments[2], u64{9}); });
  u64 value = 5;
  osw_glGetQueryObjectui64v(1, GL_QUERY_RESULT, reinterpret_cast<GLuint64*>(&value));
  EXPECT_EQ(value, 9u);
}

TEST_F(queries_on_the_parts, results_are_taken_at_their_widths) {
  received::answer_parts(0xFEDCBA9876543200);
  EXPECT_EQ(osw_glIsEnabled(GL_BLEND), 0);
  EXPECT_EQ(own_queue()->last_result, 0u);
  EXPECT_EQ(osw_glCheckFramebufferStatus(GL_FRAMEBUFFER), 0x76543200u);
  EXPECT_EQ(own_queue()->last_result, 0x76543200u);
  EXPECT_EQ(driver::bits_of(osw_glGetString(GL_VENDOR)), 0xFEDCBA9876543200u);
  EXPECT_EQ(driver::bits_of(osw_glGetStringi(GL_EXTENSIONS, 3)), 0xFEDCBA9876543200u);
  EXPECT_EQ(driver::bits_of(osw_glGetUniformOffsetEXT(1, 2)), 0xFEDCBA9876543200u);
  EXPECT_EQ(own_queue()->last_result, 0xFEDCBA9876543200u);
  received::answer_parts(0x00000000FFFFFFFF);
  EXPECT_EQ(osw_glGetAttribLocation(1, "a"), -1);
  EXPECT_EQ(own_queue()->last_result, 0xFFFFFFFFFFFFFFFFu);
}

TEST_F(queries_on_the_own_context, mapping_gives_the_own_contexts_pointer_and_maps_everywhere) {
  received::answer_app(0x7A0000001000);
  received::answer_parts(0x7B0000001000);
  EXPECT_EQ(driver::bits_of(osw_glMapBuffer(GL_ARRAY_BUFFER, GL_WRITE_ONLY)), 0x7A0000001000u);
  EXPECT_EQ(driver::bits_of(osw_glMapBufferRange(GL_ARRAY_BUFFER, 1, 2, 3)), 0x7A0000001000u);
  osw_glUnmapBuffer(GL_ARRAY_BUFFER);
  EXPECT_EQ(own_queue()->gl_sync_count[glMapBuffer_op::op], 1u);
  received::expect_parts({driver::expect<glMapBuffer_op>(GL_ARRAY_BUFFER, GL_WRITE_ONLY),
                          driver::expect<glMapBufferRange_op>(GL_ARRAY_BUFFER, 1, 2, 3),
                          driver::expect<glUnmapBuffer_op>(GL_ARRAY_BUFFER)});
}

TEST_F(queries_on_the_parts, mapping_gives_a_parts_pointer) {
  received::answer_parts(0x7B0000001000);
  EXPECT_EQ(driver::bits_of(osw_glMapBuffer(GL_ARRAY_BUFFER, GL_WRITE_ONLY)), 0x7B0000001000u);
  received::expect_app({});
}

// What only the parts hold goes through them whatever the option says.
void check_reads_through_parts() {
  GLubyte pixels[4 * 4] = {};
  osw_glReadPixels(1, 1, 2, 2, GL_RGBA, GL_UNSIGNED_BYTE, pixels);
  osw_glGetBufferSubData(GL_ARRAY_BUFFER, 3, 4, pixels);
  EXPECT_EQ(own_queue()->gl_sync_count[glReadPixels_op::op], 1u);
  EXPECT_EQ(own_queue()->gl_sync_count[glGetBufferSubData_op::op], 1u);
  received::expect_app({});
  received::for_each_part([&](const received::calls& logged) {
    ASSERT_FALSE(logged.empty());
    EXPECT_EQ(logged.back().what, driver::expect<glGetBufferSubData_op>(GL_ARRAY_BUFFER, 3, 4, pixels));
  });
  int reads = 0;
  for (int part = 0; part < received::parts(); ++part) {
    for (const received::call& one : received::of_part(part)) reads += one.what.op == glReadPixels_op::op;
  }
  EXPECT_EQ(reads, 1) << "the rectangle lies on one part";
}

TEST_F(queries_on_the_own_context, reads_go_through_the_parts) {
  check_reads_through_parts();
}

TEST_F(queries_on_the_parts, reads_go_through_the_parts) {
  check_reads_through_parts();
}

}  // namespace
