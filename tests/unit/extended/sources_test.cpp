// Sources of shaders: of a call that GL refuses the strings are not looked at, for they may be none.
#include <algorithm>
#include <cstring>

#include "support/waiting_calls.h"
#include "wgl/records/glrc.h"

namespace {

using namespace waiting;

// What would be a fault to read.
const GLchar* const* no_strings() {
  static const GLchar* const wild[] = {reinterpret_cast<const GLchar*>(0x2E6B726F77206F6E)};
  return wild;
}

std::vector<std::string> texts_of_parts() {
  std::vector<std::string> found;
  received::for_each_part([&](const received::calls& logged) {
    for (const received::call& one : logged) {
      if (one.what.op == glShaderSource_op::op) found.emplace_back(one.memory.begin(), one.memory.end());
    }
  });
  return found;
}

struct sources_test : library::process_test {
  void start(bool query_on_app_thread) {
    library::start({.parts = 2, .query_on_app_thread = query_on_app_thread, .extended = true});
    received::watch(library::start_rendering());
    received::read(glShaderSource_op::op, [](const driver::call& now, const received::calls&) {
      if (now.context == __osw_glrc_registry[0].app_hglrc || !now.arguments[2]) return std::vector<u8>();
      const GLchar* text = *reinterpret_cast<const GLchar* const*>(now.arguments[2]);
      return std::vector<u8>(text, text + strlen(text));
    });
    driver::on_call<glIsShader_op>([](driver::live_call& call) {
      call.result = call.what.arguments[0] == 6;
      call.answered = true;
    });
    begin();
  }
};

TEST_F(sources_test, those_of_a_shader_reach_the_parts_as_one_string) {
  start(true);
  const GLchar* const strings[] = {"void main", "() {}"};
  const GLint lengths[] = {-1, 5};
  EXPECT_FALSE(waits([&] { osw_glShaderSource(6, 2, strings, lengths); }));
  EXPECT_EQ(texts_of_parts(), std::vector<std::string>(2, "void main() {}"));
  EXPECT_FALSE(waits([&] { osw_glShaderSourceARB(6, 1, const_cast<const GLcharARB**>(strings), nullptr); }));
  EXPECT_EQ(texts_of_parts(), std::vector<std::string>(2, "void main"));
}

TEST_F(sources_test, a_refused_call_reaches_the_context_that_follows_alone) {
  start(true);
  osw_glShaderSource(99, 1, no_strings(), nullptr);
  osw_glShaderSourceARB(99, 1, const_cast<const GLcharARB**>(no_strings()), nullptr);
  osw_glShaderSource(6, -1, no_strings(), nullptr);
  osw_glShaderSource(6, 1, nullptr, nullptr);
  received::expect_parts({});
  const auto all = received::without_memory(received::of_app());
  EXPECT_EQ(std::ranges::count(all, static_cast<int>(glShaderSource_op::op), &driver::call::op), 4);
}

TEST_F(sources_test, without_a_context_that_follows_the_parts_get_the_error_and_no_strings) {
  start(false);
  const auto is_refused = [](GLuint shader, GLsizei count, const GLchar* const* strings, GLsizei told) {
    begin();
    osw_glShaderSource(shader, count, strings, nullptr);
    received::for_each_part([&](const received::calls& logged) {
      ASSERT_FALSE(logged.empty());
      EXPECT_EQ(logged.back().what, driver::expect<glShaderSource_op>(shader, told, nullptr, nullptr));
    });
  };
  is_refused(99, 1, no_strings(), 0);
  is_refused(6, -3, no_strings(), -3);
  is_refused(6, 1, nullptr, 0);
  begin();
  const GLchar* const text = "void main() {}";
  osw_glShaderSource(6, 1, &text, nullptr);
  EXPECT_EQ(texts_of_parts(), std::vector<std::string>(2, text));
}

}  // namespace
