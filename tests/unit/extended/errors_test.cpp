// Errors: a program has to hear of one whichever context has it, for what only the first part reads is wrong there
// alone.
#include "pipeline/cmd_queue.h"
#include "support/received.h"
#include "support/sequential_steps.h"

namespace {

struct error_case {
  GLenum first, second;
  GLenum told;
};

constexpr error_case cases[] = {
    {GL_NO_ERROR, GL_NO_ERROR, GL_NO_ERROR},
    {GL_INVALID_ENUM, GL_NO_ERROR, GL_INVALID_ENUM},
    {GL_NO_ERROR, GL_OUT_OF_MEMORY, GL_OUT_OF_MEMORY},
    {GL_INVALID_VALUE, GL_INVALID_OPERATION, GL_INVALID_VALUE},
};

struct errors_test : library::process_test {
  static void answer(const library::rendering& rendered, const error_case& one) {
    driver::set_result_in<glGetError_op>(rendered.children.at(0), one.first);
    driver::set_result_in<glGetError_op>(rendered.children.at(1), one.second);
  }
};

TEST_F(errors_test, the_context_that_follows_knows_all_without_a_wait) {
  library::start({.parts = 2, .extended = true});
  const library::rendering rendered = library::start_rendering();
  const __osw_cmd_queue* queue = __osw_fetch_thread_state()->cmd_queue;
  answer(rendered, {GL_INVALID_ENUM, GL_INVALID_ENUM, 0});
  driver::set_result_in<glGetError_op>(rendered.context, GL_INVALID_VALUE);
  const u32 waits = queue->gl_sync_count[glGetError_op::op];
  EXPECT_EQ(osw_glGetError(), GLenum{GL_INVALID_VALUE});
  EXPECT_EQ(queue->gl_sync_count[glGetError_op::op], waits);
}

TEST_F(errors_test, without_one_that_follows_the_first_part_that_has_an_error_tells_it) {
  library::start({.parts = 2, .query_on_app_thread = false, .extended = true});
  const library::rendering rendered = library::start_rendering();
  driver::set_result_in<glGetError_op>(rendered.context, GL_STACK_OVERFLOW);
  for (const error_case& one : cases) {
    answer(rendered, one);
    EXPECT_EQ(osw_glGetError(), one.told);
  }
}

TEST_F(errors_test, one_part_after_the_other_each_is_asked_and_the_first_error_told) {
  const library::rendering rendered = sequential::start({.parts = 2, .extended = true});
  for (const error_case& one : cases) {
    answer(rendered, one);
    driver::clear_calls();
    EXPECT_EQ(osw_glGetError(), one.told);
    EXPECT_EQ(sequential::steps(), sequential::on_each_part(rendered, {driver::expect<glGetError_op>()}));
  }
}

TEST_F(errors_test, in_the_basic_mode_the_last_part_tells_it) {
  const library::rendering rendered = sequential::start({.parts = 2});
  answer(rendered, {GL_INVALID_ENUM, GL_NO_ERROR, 0});
  EXPECT_EQ(osw_glGetError(), GLenum{GL_NO_ERROR});
}

}  // namespace
