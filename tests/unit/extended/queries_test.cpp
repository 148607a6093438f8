// Results of queries: those of the parts put together.
#include <array>
#include <limits>

#include "support/issuing.h"

namespace {

using driver::expect;

constexpr int part_count = 3;
constexpr GLuint query = 9;

struct queries_test : issuing::pipeline_test, testing::WithParamInterface<std::pair<library::path, bool>> {
  void SetUp() override {
    const auto [way, on_app_thread] = GetParam();
    library::start({.parts = part_count, .way = way, .query_on_app_thread = on_app_thread, .extended = true});
    rendered = library::start_rendering();
    driver::set_result<glIsQuery_op>(1);
    answer_available({1, 1, 1});
  }

  static bool is_threaded() { return GetParam().first == library::path::threaded; }

  // What the parts answer; the application's own context, which has drawn nothing, says 0.
  void answer(const std::array<u64, part_count>& results) {
    given = results;
    const auto give = [this](driver::live_call& call) {
      for (int part = 0; part < part_count; ++part) {
        if (!call.what.arguments[2] || call.what.context != rendered.children[static_cast<std::size_t>(part)]) continue;
        const bool asks_result = call.what.arguments[1] == GL_QUERY_RESULT;
        const u64 value =
            asks_result ? given[static_cast<std::size_t>(part)] : available[static_cast<std::size_t>(part)];
        const bool is_wide =
            call.what.op == glGetQueryObjecti64v_op::op || call.what.op == glGetQueryObjectui64v_op::op;
        if (is_wide) {
          *reinterpret_cast<u64*>(call.what.arguments[2]) = value;
        } else {
          *reinterpret_cast<u32*>(call.what.arguments[2]) = static_cast<u32>(value);
        }
      }
    };
    driver::on_call<glGetQueryObjectiv_op>(give);
    driver::on_call<glGetQueryObjectuiv_op>(give);
    driver::on_call<glGetQueryObjectivARB_op>(give);
    driver::on_call<glGetQueryObjecti64v_op>(give);
    driver::on_call<glGetQueryObjectui64v_op>(give);
  }
  void answer_available(const std::array<u64, part_count>& values) { available = values; }

  static void run(GLenum target) {
    osw_glBeginQuery(target, query);
    osw_glEndQuery(target);
  }

  static GLuint result() {
    GLuint value = 77;
    osw_glGetQueryObjectuiv(query, GL_QUERY_RESULT, &value);
    return value;
  }

  library::rendering rendered;
  std::array<u64, part_count> given{}, available{};
};

TEST_P(queries_test, samples_of_the_window_are_added) {
  answer({100, 20, 3});
  run(GL_SAMPLES_PASSED);
  EXPECT_EQ(result(), 123u);
  GLint value = 0;
  osw_glGetQueryObjectiv(query, GL_QUERY_RESULT, &value);
  EXPECT_EQ(value, 123);
  osw_glGetQueryObjectivARB(query, GL_QUERY_RESULT, &value);
  EXPECT_EQ(value, 123);
}

TEST_P(queries_test, samples_of_an_object_are_those_of_one_part) {
  answer({100, 100, 100});
  osw_glBindFramebuffer(GL_FRAMEBUFFER, 4);
  run(GL_SAMPLES_PASSED);
  EXPECT_EQ(result(), 100u);
}

TEST_P(queries_test, the_window_counts_at_the_beginning_and_at_the_end) {
  answer({100, 20, 3});
  osw_glBindFramebuffer(GL_FRAMEBUFFER, 4);
  osw_glBeginQuery(GL_SAMPLES_PASSED, query);
  osw_glBindFramebuffer(GL_DRAW_FRAMEBUFFER, 0);
  osw_glEndQuery(GL_SAMPLES_PASSED);
  EXPECT_EQ(result(), 123u);
}

TEST_P(queries_test, any_sample_of_any_part_is_one) {
  for (const GLenum target : {GL_ANY_SAMPLES_PASSED, GL_ANY_SAMPLES_PASSED_CONSERVATIVE}) {
    answer({0, 1, 1});
    run(target);
    EXPECT_EQ(result(), 1u);
    answer({0, 0, 0});
    EXPECT_EQ(result(), 0u);
  }
}

TEST_P(queries_test, primitives_are_those_of_one_part_and_times_the_largest) {
  answer({50, 50, 50});
  for (const GLenum target : {GL_PRIMITIVES_GENERATED, GL_TRANSFORM_FEEDBACK_PRIMITIVES_WRITTEN}) {
    run(target);
    EXPECT_EQ(result(), 50u);
  }
  answer({5, 90, 7});
  run(GL_TIME_ELAPSED);
  EXPECT_EQ(result(), 90u);
  osw_glQueryCounter(query, GL_TIMESTAMP);
  const u64 late = u64{1} << 40;
  answer({late, late + 5, late + 3});
  GLuint64 time = 0;
  osw_glGetQueryObjectui64v(query, GL_QUERY_RESULT, &time);
  EXPECT_EQ(time, late + 5);
  GLint64 signed_time = 0;
  osw_glGetQueryObjecti64v(query, GL_QUERY_RESULT, &signed_time);
  EXPECT_EQ(signed_time, static_cast<GLint64>(late + 5));
}

TEST_P(queries_test, a_sum_that_does_not_fit_is_the_largest_that_does) {
  answer({0x90000000, 0x90000000, 0});
  run(GL_SAMPLES_PASSED);
  EXPECT_EQ(result(), std::numeric_limits<GLuint>::max());
  GLint value = 0;
  osw_glGetQueryObjectiv(query, GL_QUERY_RESULT, &value);
  EXPECT_EQ(value, std::numeric_limits<GLint>::max());
}

TEST_P(queries_test, a_result_is_available_when_all_parts_have_it) {
  answer({1, 2, 3});
  run(GL_SAMPLES_PASSED);
  GLuint value = 77;
  answer_available({1, 0, 1});
  osw_glGetQueryObjectuiv(query, GL_QUERY_RESULT_AVAILABLE, &value);
  EXPECT_EQ(value, 0u);
  value = 77;
  osw_glGetQueryObjectuiv(query, GL_QUERY_RESULT_NO_WAIT, &value);
  EXPECT_EQ(value, 77u) << "it was not available";
  answer_available({1, 1, 1});
  osw_glGetQueryObjectuiv(query, GL_QUERY_RESULT_AVAILABLE, &value);
  EXPECT_EQ(value, 1u);
  osw_glGetQueryObjectuiv(query, GL_QUERY_RESULT_NO_WAIT, &value);
  EXPECT_EQ(value, 6u);
}

TEST_P(queries_test, streams_are_queries_of_their_own) {
  answer({4, 4, 4});
  osw_glBeginQueryIndexed(GL_PRIMITIVES_GENERATED, 0, 20);
  osw_glBeginQueryIndexed(GL_PRIMITIVES_GENERATED, 1, query);
  osw_glEndQueryIndexed(GL_PRIMITIVES_GENERATED, 0);
  EXPECT_TRUE(driver::calls_of<glGetQueryObjectuiv_op>().empty());
  osw_glEndQueryIndexed(GL_PRIMITIVES_GENERATED, 1);
  EXPECT_EQ(result(), 4u);
}

// GL has an error for each of these, which is the current context's that answers.
TEST_P(queries_test, what_gl_refuses_is_put_together_of_nothing) {
  answer({100, 20, 3});
  osw_glBeginQuery(GL_SAMPLES_PASSED, query);
  GLuint value = 77;
  osw_glGetQueryObjectuiv(query, GL_QUERY_RESULT, &value);
  EXPECT_NE(value, 123u) << "it was still active";
  osw_glEndQuery(GL_SAMPLES_PASSED);
  osw_glEndQuery(GL_SAMPLES_PASSED);
  osw_glBeginQuery(GL_SAMPLES_PASSED, 0);
  osw_glEndQuery(GL_TIME_ELAPSED);
  EXPECT_EQ(result(), 123u);
  for (const GLuint other : {0u, 1u, 0xFFFFFFFFu}) {
    value = 77;
    osw_glGetQueryObjectuiv(other, GL_QUERY_RESULT, &value);
    EXPECT_NE(value, 123u);
  }
  osw_glGetQueryObjectuiv(query, GL_QUERY_RESULT, nullptr);
}

TEST_P(queries_test, nothing_is_left_of_a_thousand_queries) {
  for (GLuint id = 1; id <= 1000; ++id) {
    osw_glBeginQuery(GL_SAMPLES_PASSED, id);
    osw_glEndQuery(GL_SAMPLES_PASSED);
  }
  osw_wglMakeCurrent(nullptr, nullptr);
  EXPECT_TRUE(osw_wglDeleteContext(rendered.context));
}

INSTANTIATE_TEST_SUITE_P(paths, queries_test,
                         testing::Values(std::pair(library::path::threaded, true),
                                         std::pair(library::path::threaded, false),
                                         std::pair(library::path::sequential, true)),
                         [](const auto& way) {
                           if (way.param.first == library::path::sequential) return "sequential";
                           return way.param.second ? "threaded_on" : "threaded_off";
                         });

}  // namespace
