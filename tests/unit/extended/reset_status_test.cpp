// Whether the graphics had to be reset: a program has to hear of it whichever context it was.
#include "pipeline/cmd_queue.h"
#include "support/received.h"
#include "support/sequential_steps.h"

namespace {

struct status_case {
  GLenum app, first, second;
  GLenum worst;
};

constexpr status_case cases[] = {
    {GL_NO_ERROR, GL_NO_ERROR, GL_NO_ERROR, GL_NO_ERROR},
    {GL_NO_ERROR, GL_UNKNOWN_CONTEXT_RESET, GL_NO_ERROR, GL_UNKNOWN_CONTEXT_RESET},
    {GL_UNKNOWN_CONTEXT_RESET, GL_NO_ERROR, GL_INNOCENT_CONTEXT_RESET, GL_INNOCENT_CONTEXT_RESET},
    {GL_INNOCENT_CONTEXT_RESET, GL_GUILTY_CONTEXT_RESET, GL_UNKNOWN_CONTEXT_RESET, GL_GUILTY_CONTEXT_RESET},
    {GL_GUILTY_CONTEXT_RESET, GL_NO_ERROR, GL_INNOCENT_CONTEXT_RESET, GL_GUILTY_CONTEXT_RESET},
};

struct reset_status_test : library::process_test {
  static void answer(const library::rendering& rendered, const status_case& one) {
    driver::set_result_in<glGetGraphicsResetStatus_op>(rendered.context, one.app);
    driver::set_result_in<glGetGraphicsResetStatus_op>(rendered.children.at(0), one.first);
    driver::set_result_in<glGetGraphicsResetStatus_op>(rendered.children.at(1), one.second);
  }
};

TEST_F(reset_status_test, the_worst_of_all_contexts_is_told_after_a_wait) {
  library::start({.parts = 2, .extended = true});
  const library::rendering rendered = library::start_rendering();
  const __osw_cmd_queue* queue = __osw_fetch_thread_state()->cmd_queue;
  for (const status_case& one : cases) {
    answer(rendered, one);
    const u32 waits = queue->wide_sync_count[glGetGraphicsResetStatus_op::op - gl_op_count];
    EXPECT_EQ(osw_glGetGraphicsResetStatus(), one.worst);
    EXPECT_EQ(queue->wide_sync_count[glGetGraphicsResetStatus_op::op - gl_op_count], waits + 1);
  }
}

TEST_F(reset_status_test, one_part_after_the_other_the_worst_is_told_too) {
  const library::rendering rendered = sequential::start({.parts = 2, .extended = true});
  for (const status_case& one : cases) {
    answer(rendered, one);
    driver::clear_calls();
    EXPECT_EQ(osw_glGetGraphicsResetStatus(), one.worst);
    std::vector<sequential::step> wanted =
        sequential::on_each_part(rendered, {driver::expect<glGetGraphicsResetStatus_op>()});
    wanted.push_back({rendered.context, driver::expect<glGetGraphicsResetStatus_op>()});
    EXPECT_EQ(sequential::steps(), wanted);
  }
}

// A context that follows no call cannot have been reset by one.
TEST_F(reset_status_test, without_a_context_that_follows_the_parts_alone_are_asked) {
  library::start({.parts = 2, .query_on_app_thread = false, .extended = true});
  const library::rendering rendered = library::start_rendering();
  answer(rendered, {GL_GUILTY_CONTEXT_RESET, GL_NO_ERROR, GL_INNOCENT_CONTEXT_RESET, 0});
  EXPECT_EQ(osw_glGetGraphicsResetStatus(), GLenum{GL_INNOCENT_CONTEXT_RESET});
}

}  // namespace
