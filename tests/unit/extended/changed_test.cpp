// Ops of the basic mode that the extended one takes in another way.
#include <algorithm>

#include "pipeline/cmd_queue.h"
#include "sequential/sequential_table.h"
#include "support/expected_figures.h"
#include "support/library.h"
#include "support/op_rows.h"
#include "support/received.h"
#include "threaded/threaded_table.h"

namespace {

struct changed_test : library::process_test {
  static void start(bool extended) {
    library::start({.parts = 2, .extended = extended});
    received::watch(library::start_rendering());
  }
};

TEST_F(changed_test, an_op_that_is_not_in_the_list_has_the_handlers_of_the_basic_mode) {
  start(false);
  const std::vector<ops::row> basic(ops::every().begin(), ops::every().end());
  const std::vector<__osw_proc> threaded(std::begin(__osw_gl_table_mt), std::end(__osw_gl_table_mt));
  const std::vector<__osw_proc> sequential(std::begin(__osw_gl_table_seq), std::end(__osw_gl_table_seq));
  std::vector<bool> is_listed(gl_op_count);
  for_each_changed_op([&]<class Op>() { is_listed[Op::op] = true; });
  gl_ops_in_use = gl_all_count;
  __osw_fill_gl_table_mt();
  __osw_fill_gl_table_seq();
  gl_ops_in_use = gl_op_count;
  for (std::size_t op = 0; op < gl_op_count; ++op) {
    if (is_listed[op]) continue;
    EXPECT_EQ(__osw_gl_table_mt[op], threaded[op]) << basic[op].name;
    EXPECT_EQ(__osw_gl_table_seq[op], sequential[op]) << basic[op].name;
  }
}

TEST_F(changed_test, the_list_has_its_ops) {
  int count = 0;
  for_each_gl_op([&]<class Op>() { count += is_changed<Op>; });
  EXPECT_EQ(count, figures::changed_gl_ops);
}

// Neither a result nor the application's memory is waited for.
TEST_F(changed_test, what_has_nothing_to_wait_for_does_not_wait) {
  start(true);
  const __osw_cmd_queue* queue = __osw_fetch_thread_state()->cmd_queue;
  received::wait_for_parts();
  const std::vector<u32> waits(std::begin(queue->gl_sync_count), std::end(queue->gl_sync_count));
  const u32 filled = *queue->fill_count;
  const GLuint values[] = {1, 2, 3, 4};
  osw_glEnablei(GL_BLEND, 1);
  osw_glColorMaskIndexedEXT(1, 1, 0, 1, 0);
  osw_glBindBufferBase(GL_UNIFORM_BUFFER, 0, 1);
  osw_glUniform4uiv(2, 1, values);
  osw_glVertexAttribI4uiv(3, values);
  EXPECT_EQ(*queue->fill_count, filled + 5);
  EXPECT_TRUE(std::ranges::equal(queue->gl_sync_count, waits));
}

TEST_F(changed_test, mipmaps_are_made_on_the_parts_and_on_the_application_s_context) {
  start(true);
  osw_glGenerateMipmap(GL_TEXTURE_2D);
  received::expect_parts({driver::expect<glGenerateMipmap_op>(GL_TEXTURE_2D)});
  received::expect_app({driver::expect<glGenerateMipmap_op>(GL_TEXTURE_2D)});
}

TEST_F(changed_test, a_copied_array_may_change_at_once) {
  start(true);
  GLfloat colour[] = {0.25f, 0.5f, 0.75f, 1};
  const std::vector<GLfloat> wanted(std::begin(colour), std::end(colour));
  received::read(glClearBufferfv_op::op, received::bytes_at(2, sizeof colour));
  osw_glClearBufferfv(GL_COLOR, 0, colour);
  std::ranges::fill(colour, -1.0f);
  const auto* first = reinterpret_cast<const u8*>(wanted.data());
  received::for_each_part([&](const received::calls& logged) {
    ASSERT_EQ(logged.size(), 1u);
    EXPECT_EQ(logged[0].memory, std::vector<u8>(first, first + sizeof colour));
  });
}

TEST_F(changed_test, a_name_of_one_output_is_copied_to_its_end) {
  start(true);
  char name[] = "colour";
  received::read(glBindFragDataLocation_op::op, received::bytes_at(2, sizeof name));
  osw_glBindFragDataLocation(1, 0, name);
  name[0] = 'x';
  received::for_each_part([&](const received::calls& logged) {
    ASSERT_EQ(logged.size(), 1u);
    EXPECT_STREQ(reinterpret_cast<const char*>(logged[0].memory.data()), "colour");
  });
}

}  // namespace
