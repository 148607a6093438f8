// Calls whose memory is copied in other forms: one pixel, several arrays, and arrays of strings.
#include <algorithm>
#include <cstring>
#include <numeric>

#include "pipeline/cmd_queue.h"
#include "support/allocation.h"
#include "support/received.h"

namespace {

struct copied_test : library::process_test {
  void SetUp() override {
    library::start({.parts = 3, .extended = true});
    rendered = library::start_rendering();
    received::watch(rendered);
  }
  library::rendering rendered;
};

using bytes = std::vector<u8>;

template <class Value>
bytes bytes_of(const std::vector<Value>& values) {
  const auto* first = reinterpret_cast<const u8*>(values.data());
  return {first, first + values.size() * sizeof(Value)};
}

std::vector<std::string> errors(std::initializer_list<const char*> functions) {
  std::vector<std::string> lines;
  for (const char* function : functions) {
    lines.push_back(std::string("OGLSPANWrapper Error: no memory for the data of ") + function + "\n");
  }
  return lines;
}

// ---- one pixel ----

struct pixel {
  GLenum format, type;
  std::size_t size;
};

TEST_F(copied_test, one_pixel_is_as_large_as_format_and_type_say) {
  // No pixel has the bytes that one before it may have left in its record.
  u8 first = 3;
  for (const pixel& one :
       {pixel{GL_RED, GL_UNSIGNED_BYTE, 1}, pixel{GL_RG, GL_SHORT, 4}, pixel{GL_RGBA, GL_FLOAT, 16},
        pixel{GL_RGBA_INTEGER, GL_UNSIGNED_INT, 16}, pixel{GL_RGB, GL_UNSIGNED_SHORT_5_6_5, 2},
        pixel{GL_DEPTH_COMPONENT, GL_FLOAT, 4}, pixel{GL_DEPTH_STENCIL, GL_UNSIGNED_INT_24_8, 4},
        pixel{GL_DEPTH_STENCIL, GL_FLOAT_32_UNSIGNED_INT_24_8_REV, 8}, pixel{GL_RGBA, GL_HALF_FLOAT, 8}}) {
    received::clear();
    received::forget_readers();
    bytes data(one.size);
    std::iota(data.begin(), data.end(), first += 16);
    const bytes wanted = data;
    received::read(glClearTexImage_op::op, received::bytes_at(4, one.size));
    osw_glClearTexImage(1, 0, one.format, one.type, data.data());
    std::ranges::fill(data, u8{0});
    received::for_each_part([&](const received::calls& logged) {
      ASSERT_EQ(logged.size(), 1u);
      EXPECT_EQ(logged[0].memory, wanted) << one.format << ' ' << one.type;
    });
  }
}

TEST_F(copied_test, no_pixel_stays_none) {
  osw_glClearBufferSubData(GL_ARRAY_BUFFER, GL_R8, 0, 16, GL_RED, GL_UNSIGNED_BYTE, nullptr);
  const driver::call wanted =
      driver::expect<glClearBufferSubData_op>(GL_ARRAY_BUFFER, GL_R8, 0, 16, GL_RED, GL_UNSIGNED_BYTE, nullptr);
  received::expect_parts({wanted});
  received::expect_app({wanted});
}

// GL refuses it; the record has room for whatever it looks at.
TEST_F(copied_test, a_pixel_of_a_type_that_nobody_knows_is_left_to_gl) {
  const GLuint pixel = 7;
  osw_glClearTexImage(1, 0, GL_RGBA, 0x4711, &pixel);
  received::for_each_part([](const received::calls& logged) { EXPECT_EQ(logged.size(), 1u); });
}

// ---- several arrays ----

TEST_F(copied_test, of_several_arrays_those_that_are_null_stay_null) {
  const std::vector<GLuint> buffers = {4, 5};
  osw_glBindVertexBuffers(1, 2, buffers.data(), nullptr, nullptr);
  osw_glBindBuffersRange(GL_UNIFORM_BUFFER, 0, 2, nullptr, nullptr, nullptr);
  received::for_each_part([&](const received::calls& logged) {
    ASSERT_EQ(logged.size(), 2u);
    EXPECT_NE(logged[0].what.arguments[2], driver::bits_of(buffers.data()));
    EXPECT_EQ(logged[0].what.arguments[3], 0u);
    EXPECT_EQ(logged[0].what.arguments[4], 0u);
    EXPECT_EQ(logged[1].what,
              driver::expect<glBindBuffersRange_op>(GL_UNIFORM_BUFFER, 0u, 2, nullptr, nullptr, nullptr));
  });
}

// So many that some lie in the record, or none.
TEST_F(copied_test, several_arrays_of_any_length_arrive_whole) {
  for (const std::size_t count : {1u, 9u, 10u, 11u, 12u, 26u, 52u, 54u, 1000u}) {
    SCOPED_TRACE(count);
    std::vector<GLuint> buffers(count);
    std::vector<GLintptr> offsets(count);
    std::vector<GLsizei> strides(count);
    std::iota(buffers.begin(), buffers.end(), 1u);
    std::iota(offsets.begin(), offsets.end(), 1000);
    std::iota(strides.begin(), strides.end(), 50000);
    bytes wanted = bytes_of(buffers);
    for (const bytes& more : {bytes_of(offsets), bytes_of(strides)}) {
      wanted.insert(wanted.end(), more.begin(), more.end());
    }
    received::clear();
    received::forget_readers();
    received::read(glVertexArrayVertexBuffers_op::op, [count](const driver::call& now, const received::calls&) {
      bytes found;
      const std::size_t sizes[] = {sizeof(GLuint), sizeof(GLintptr), sizeof(GLsizei)};
      for (std::size_t i = 0; i < 3; ++i) {
        const bytes more = received::memory_at(now.arguments[i + 3], count * sizes[i]);
        found.insert(found.end(), more.begin(), more.end());
      }
      return found;
    });
    osw_glVertexArrayVertexBuffers(1, 0, static_cast<GLsizei>(count), buffers.data(), offsets.data(), strides.data());
    std::ranges::fill(buffers, 0u);
    std::ranges::fill(offsets, 0);
    std::ranges::fill(strides, 0);
    received::for_each_part([&](const received::calls& logged) {
      ASSERT_EQ(logged.size(), 1u);
      EXPECT_EQ(logged[0].memory, wanted);
    });
  }
}

TEST_F(copied_test, without_memory_for_one_of_several_arrays_no_part_gets_the_call_and_nothing_leaks) {
  const std::vector<GLuint> buffers(1000);
  const std::vector<GLintptr> offsets(1000);
  const std::vector<GLsizei> strides(1000);
  for (const int failing : {1, 2, 3}) {
    allocation::watch();
    allocation::fail_call(failing);
    osw_glBindVertexBuffers(0, 1000, buffers.data(), offsets.data(), strides.data());
    allocation::stop_failing();
    EXPECT_EQ(static_cast<int>(allocation::freed().size()), failing - 1);
    allocation::stop_watching();
  }
  received::expect_parts({});
  EXPECT_EQ(library::reports(), errors({"glBindVertexBuffers", "glBindVertexBuffers", "glBindVertexBuffers"}));
}

TEST_F(copied_test, odd_counts_of_several_arrays_are_safe) {
  const GLuint one = 1;
  osw_glShaderBinary(-1, &one, 0x4711, &one, -5);
  received::for_each_part([](const received::calls& logged) {
    ASSERT_EQ(logged.size(), 1u);
    EXPECT_EQ(static_cast<GLsizei>(logged[0].what.arguments[0]), -1);
    EXPECT_EQ(static_cast<GLsizei>(logged[0].what.arguments[4]), -5);
  });
  received::clear();
  osw_glSpecializeShader(1, "main", 0xFFFFFFFF, &one, &one);
  osw_glShaderBinary(0x7FFFFFFF, &one, 0x4711, &one, 4);
  received::expect_parts({});
  EXPECT_EQ(library::reports(), errors({"glSpecializeShader", "glShaderBinary"}));
}

// ---- arrays of strings ----

// Each string with its end, "-" for one that is null.
received::reader strings_at(u32 argument, std::size_t count) {
  return [=](const driver::call& now, const received::calls&) {
    bytes found;
    const auto* texts = reinterpret_cast<const char* const*>(now.arguments[argument]);
    for (std::size_t i = 0; i < count; ++i) {
      const std::string text = texts[i] ? texts[i] : "-";
      found.insert(found.end(), text.c_str(), text.c_str() + text.size() + 1);
    }
    return found;
  };
}

template <class Call>
void expect_strings(int op, Call call) {
  std::string long_one(3000, 'v');
  char short_one[] = "gl_Position";
  const GLchar* strings[] = {short_one, nullptr, long_one.c_str(), ""};
  received::read(op, strings_at(2, 4));
  const u32 waits = __osw_fetch_thread_state()->cmd_queue->send_sync_count;
  call(4, strings);
  EXPECT_EQ(__osw_fetch_thread_state()->cmd_queue->send_sync_count, waits);
  std::string wanted = std::string("gl_Position") + '\0' + "-" + '\0' + long_one + '\0' + '\0';
  std::ranges::fill(long_one, 'x');
  short_one[0] = 'x';
  std::ranges::fill(strings, nullptr);
  received::for_each_part([&](const received::calls& logged) {
    ASSERT_EQ(logged.size(), 1u);
    EXPECT_EQ(logged[0].memory, bytes(wanted.begin(), wanted.end()));
  });
}

TEST_F(copied_test, the_outputs_that_feedback_keeps_are_copied) {
  expect_strings(glTransformFeedbackVaryings_op::op, [](GLsizei count, const GLchar* const* strings) {
    osw_glTransformFeedbackVaryings(1, count, strings, GL_SEPARATE_ATTRIBS);
  });
}

TEST_F(copied_test, the_outputs_that_feedback_keeps_are_copied_by_the_other_name_too) {
  expect_strings(glTransformFeedbackVaryingsEXT_op::op, [](GLsizei count, const GLchar* const* strings) {
    osw_glTransformFeedbackVaryingsEXT(1, count, strings, GL_SEPARATE_ATTRIBS);
  });
}

TEST_F(copied_test, a_program_of_one_shader_is_made_everywhere_without_a_wait) {
  driver::hand_out_names();
  expect_strings(glCreateShaderProgramv_op::op, [](GLsizei count, const GLchar* const* strings) {
    EXPECT_EQ(osw_glCreateShaderProgramv(GL_VERTEX_SHADER, count, strings), 1u);
  });
  EXPECT_TRUE(library::reports().empty());
  received::forget_readers();
  const GLchar* const source = "void main() {}";
  driver::skip_names(rendered.children[1], 1);
  EXPECT_EQ(osw_glCreateShaderProgramv(GL_VERTEX_SHADER, 1, &source), 2u);
  received::wait_for_parts();
  EXPECT_EQ(library::reports(),
            std::vector<std::string>{"OGLSPANWrapper Warning: glCreateShaderProgramv has made other "
                                     "names on part 1 than the program got.\n"});
}

TEST_F(copied_test, arrays_of_strings_with_odd_counts_or_without_memory_are_safe) {
  const GLchar* const string = "name";
  osw_glTransformFeedbackVaryings(1, -1, &string, GL_SEPARATE_ATTRIBS);
  osw_glTransformFeedbackVaryings(1, 3, nullptr, GL_SEPARATE_ATTRIBS);
  received::expect_parts({driver::expect<glTransformFeedbackVaryings_op>(1u, -1, nullptr, GL_SEPARATE_ATTRIBS),
                          driver::expect<glTransformFeedbackVaryings_op>(1u, 3, nullptr, GL_SEPARATE_ATTRIBS)});
  received::clear();
  osw_glTransformFeedbackVaryings(1, 0x7FFFFFFF, &string, GL_SEPARATE_ATTRIBS);
  allocation::fail_call(1);
  osw_glTransformFeedbackVaryings(1, 1, &string, GL_SEPARATE_ATTRIBS);
  allocation::stop_failing();
  allocation::fail_call(1);
  osw_glCreateShaderProgramv(GL_VERTEX_SHADER, 1, &string);
  allocation::stop_failing();
  received::expect_parts({});
  EXPECT_EQ(library::reports(),
            errors({"glTransformFeedbackVaryings", "glTransformFeedbackVaryings", "glCreateShaderProgramv"}));
}

TEST_F(copied_test, without_memory_contents_of_a_named_buffer_stay_what_they_are) {
  const std::vector<u8> data(100);
  allocation::fail_call(1);
  osw_glNamedBufferSubData(3, 8, 100, data.data());
  allocation::stop_failing();
  received::expect_parts({driver::expect<glNamedBufferSubData_op>(3u, 8, 0, nullptr)});
  EXPECT_EQ(library::reports(), errors({"glNamedBufferSubData"}));
}

}  // namespace
