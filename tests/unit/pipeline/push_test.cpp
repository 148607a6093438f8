// Appending commands, and when a list is handed over.
#include "pipeline/statistics.h"
#include "startup/config/monitors.h"
#include "support/issuing.h"

namespace {

using namespace issuing;

// What stands where before and after a step of the issuing thread, which is the test's own.
struct lists {
  __osw_cmd** fill;
  u32 count;
  u32 full;
};

lists lists_now() {
  return {queue()->fill_list, *queue()->fill_count, queue()->full_count};
}

bool flipped(const lists& before) {
  return queue()->fill_list != before.fill && queue()->read_list == before.fill;
}

struct push_test : pipeline_test {
  // An empty list to fill, on two parts.
  void begin(int parts = 2) {
    library::start({.parts = parts, .query_on_app_thread = false});
    rendered = library::start_rendering();
    empty_list();
    __osw_reset_sync_info(state());
    driver::clear_calls();
  }
  void expect_parts(const std::vector<driver::call>& expected) const {
    for (int part = 0; part < __osw_part_count; ++part) EXPECT_EQ(library::part_calls(rendered, part), expected);
    EXPECT_TRUE(driver::gl_calls_in(rendered.context).empty());
  }
  library::rendering rendered;
};
struct push_count_test : push_test, testing::WithParamInterface<u32> {};

TEST_F(push_test, a_list_flips_at_5000_and_not_before) {
  begin();
  const lists before = lists_now();
  ASSERT_EQ(before.count, 0u);
  push_hints(4999);
  EXPECT_EQ(queue()->fill_list, before.fill);
  EXPECT_EQ(*queue()->fill_count, 4999u);
  EXPECT_EQ(queue()->full_count, 0u);
  ASSERT_TRUE(wait_for_idle_workers());
  expect_parts({});
  push_hints(1, 4999);
  EXPECT_TRUE(flipped(before));
  EXPECT_EQ(*queue()->fill_count, 0u);
  EXPECT_EQ(*queue()->read_count, 5000u);
  EXPECT_EQ(queue()->full_count, 1u);
  ASSERT_TRUE(wait_for_idle_workers());
  EXPECT_EQ(masks_of(queue()).sync, 0u) << "nobody waits for a full list";
  expect_parts(hints(5000));
}

TEST_F(push_test, lists_take_turns) {
  begin();
  __osw_cmd** const first = queue()->fill_list;
  u32* const first_count = queue()->fill_count;
  __osw_cmd** const second = queue()->read_list;
  for (u32 round = 1; round <= 5; ++round) {
    push_hints(5000, 5000 * round);
    EXPECT_EQ(queue()->fill_list, round % 2 ? second : first);
    EXPECT_EQ(queue()->fill_count == first_count, queue()->fill_list == first) << "a list and a foreign count";
    EXPECT_EQ(queue()->full_count, round);
  }
  empty_list();
  expect_parts(hints(25000, 5000));
}

TEST_P(push_count_test, a_synchronous_op_empties_the_list_at_any_count) {
  begin();
  push_hints(GetParam());
  const lists before = lists_now();
  ASSERT_EQ(before.count, GetParam());
  EXPECT_EQ(queue()->gl_sync_count[glGetError_op::op], 0u);
  __osw_push_gl_cmd(state(), glGetError_op::op, 0, nullptr, 0);
  EXPECT_TRUE(flipped(before));
  EXPECT_EQ(*queue()->fill_count, 0u);
  EXPECT_EQ(*queue()->read_count, GetParam() + 1);
  EXPECT_EQ(queue()->gl_sync_count[glGetError_op::op], 1u);
  EXPECT_EQ(queue()->full_count, 0u);
  EXPECT_EQ(queue()->send_sync_count, 0u);
  EXPECT_EQ(masks_of(queue()).sync, 0u);
  EXPECT_EQ(masks_of(queue()).start & queue()->app_bit, queue()->app_bit);
  std::vector<driver::call> expected = hints(GetParam());
  expected.push_back(driver::expect<glGetError_op>());
  expect_parts(expected);

  __osw_cmd* const next = *queue()->fill_list;
  push_hints(1, 77);
  EXPECT_EQ(next->op, glHint_op::op);
  EXPECT_EQ(next->args[1], 77u);
  EXPECT_EQ(*queue()->fill_count, 1u);
}

TEST_P(push_count_test, a_type_3_record_does_the_same) {
  begin();
  push_hints(GetParam());
  const lists before = lists_now();
  __osw_send_sync_cmd(state());
  EXPECT_TRUE(flipped(before));
  EXPECT_EQ(*queue()->fill_count, 0u);
  EXPECT_EQ((*queue()->read_list)[GetParam()].type, cmd_sync);
  EXPECT_EQ(queue()->send_sync_count, 1u);
  EXPECT_EQ(queue()->full_count, 0u);
  expect_parts(hints(GetParam()));
}

INSTANTIATE_TEST_SUITE_P(counts, push_count_test, testing::Values(0u, 1u, 2u, 2500u, 4998u, 4999u));

template <std::size_t ops>
u32 sum(const u32 (&counts)[ops]) {
  u32 all = 0;
  for (const u32 count : counts) all += count;
  return all;
}

TEST_F(push_test, every_synchronous_op_flushes_and_counts_for_itself_alone) {
  begin();
  const u64 none[12] = {};
  u32 flushes = 0;
  for (int op = 0; op < gl_op_count; ++op) {
    const lists before = lists_now();
    __osw_push_gl_cmd(state(), op, 12, none, 0);
    const bool waits = __osw_gl_sync_flags[op] != 0;
    flushes += waits;
    EXPECT_EQ(flipped(before), waits) << op;
    EXPECT_EQ(queue()->gl_sync_count[op], static_cast<u32>(waits)) << op;
  }
  EXPECT_EQ(flushes, 641u);
  EXPECT_EQ(sum(queue()->gl_sync_count), 641u);
  flushes = 0;
  for (int op = 0; op < wgl_op_count; ++op) {
    const lists before = lists_now();
    __osw_push_wgl_cmd(state(), op, 12, none, 0);
    const bool waits = __osw_wgl_sync_flags[op] != 0;
    flushes += waits;
    EXPECT_EQ(flipped(before), waits) << op;
    EXPECT_EQ(queue()->wgl_sync_count[op], static_cast<u32>(waits)) << op;
  }
  EXPECT_EQ(flushes, 58u);
  EXPECT_EQ(sum(queue()->wgl_sync_count), 58u);
  EXPECT_EQ(queue()->send_sync_count + queue()->full_count, 0u);
}

// Writes what no record has by itself.
void soil(__osw_cmd* cmd) {
  cmd->type = 99;
  cmd->op = -7;
  cmd->result = 0x1111;
  cmd->arg_count = 0x2222;
  for (u64& slot : cmd->args) slot = 0x3333;
  cmd->blob_mask = 0xFFFFFFFF;
  cmd->blob_release_count = 0x4444;
}

TEST_F(push_test, a_gl_command_writes_what_it_fills_and_no_more) {
  begin();
  __osw_cmd* cmd = __osw_next_cmd(queue());
  soil(cmd);
  const u64 slots[] = {0xAAAA, 0xBBBB};
  __osw_push_gl_cmd(state(), glHint_op::op, 2, slots, 0);
  EXPECT_EQ(cmd->type, 2u);
  EXPECT_EQ(cmd->op, glHint_op::op);
  EXPECT_EQ(cmd->arg_count, 2u);
  EXPECT_EQ(cmd->args[0], 0xAAAAu);
  EXPECT_EQ(cmd->args[1], 0xBBBBu);
  for (int slot = 2; slot < 32; ++slot) EXPECT_EQ(cmd->args[slot], 0x3333u) << "a payload in slot " << slot;
  EXPECT_EQ(cmd->blob_mask, 0u);
  EXPECT_EQ(cmd->blob_release_count, 0u);

  cmd = __osw_next_cmd(queue());
  soil(cmd);
  __osw_push_gl_cmd(state(), glEnd_op::op, 0, nullptr, 0);
  EXPECT_EQ(cmd->arg_count, 0u);
  EXPECT_EQ(cmd->args[0], 0x3333u);
}

TEST_F(push_test, a_wgl_command_has_no_blobs) {
  begin();
  __osw_cmd* cmd = __osw_next_cmd(queue());
  soil(cmd);
  const u64 slots[] = {5};
  __osw_push_wgl_cmd(state(), wglSwapIntervalEXT_op::op, 1, slots, 0);
  EXPECT_EQ(cmd->type, 1u);
  EXPECT_EQ(cmd->op, wglSwapIntervalEXT_op::op);
  EXPECT_EQ(cmd->arg_count, 1u);
  EXPECT_EQ(cmd->args[0], 5u);
  EXPECT_EQ(cmd->args[1], 0x3333u);
  EXPECT_EQ(cmd->blob_mask, 0u);
  EXPECT_EQ(cmd->blob_release_count, 0u);
}

TEST_F(push_test, a_type_3_record_has_only_its_type_written) {
  begin();
  __osw_cmd* cmd = __osw_next_cmd(queue());
  soil(cmd);
  cmd->blob_mask = 0;
  __osw_send_sync_cmd(state());
  EXPECT_EQ(cmd->type, 3u);
  EXPECT_EQ(cmd->op, -7);
  EXPECT_EQ(cmd->result, 0x1111u);
  EXPECT_EQ(cmd->arg_count, 0x2222u);
  for (const u64 slot : cmd->args) EXPECT_EQ(slot, 0x3333u);
  EXPECT_EQ(cmd->blob_release_count, 0x4444u);
}

TEST_F(push_test, the_sync_flag_of_the_last_synchronous_op_is_kept) {
  begin();
  queue()->last_sync_flag = 7;
  push_hints(1);
  EXPECT_EQ(queue()->last_sync_flag, 7u);
  __osw_send_sync_cmd(state());
  EXPECT_EQ(queue()->last_sync_flag, 7u);
  __osw_push_gl_cmd(state(), glGetError_op::op, 0, nullptr, 0);
  EXPECT_EQ(queue()->last_sync_flag, 1u);
  queue()->last_sync_flag = 7;
  const u64 none[] = {0, 0};
  __osw_push_wgl_cmd(state(), wglShareLists_op::op, 2, none, 0);
  EXPECT_EQ(queue()->last_sync_flag, 1u);
}

TEST_F(push_test, a_wgl_command_flushes_by_its_own_flag) {
  begin();
  const lists before = lists_now();
  const u64 slots[] = {1, 0};
  for (u32 i = 0; i < 4999; ++i) __osw_push_wgl_cmd(state(), wglSwapIntervalEXT_op::op, 1, slots, 0);
  EXPECT_EQ(*queue()->fill_count, 4999u);
  EXPECT_EQ(queue()->fill_list, before.fill);
  __osw_push_wgl_cmd(state(), wglSwapIntervalEXT_op::op, 1, slots, 0);
  EXPECT_TRUE(flipped(before));
  EXPECT_EQ(queue()->full_count, 1u);
  const u64 none[] = {0, 0};
  __osw_push_wgl_cmd(state(), wglShareLists_op::op, 2, none, 0);
  EXPECT_EQ(queue()->fill_list, before.fill);
  EXPECT_EQ(queue()->wgl_sync_count[wglShareLists_op::op], 1u);
  EXPECT_EQ(queue()->full_count, 1u);
  EXPECT_EQ(driver::calls_of<wglSwapIntervalEXT_op>().size(), 2u * 5000);
}

TEST_F(push_test, a_result_comes_back_with_the_last_worker_to_store) {
  library::start({.parts = 4, .query_on_app_thread = false});
  const renderer asking = start_renderer();
  for (u32 part = 0; part < 4; ++part) {
    driver::set_result_in<glGetAttribLocation_op>(asking.rendered.children[part], 100 + part);
  }
  for (int last = 0; last < 4; ++last) {
    run_answered_last<glGetAttribLocation_op>(asking, last, [last] {
      const u64 slots[] = {1, 0};
      __osw_cmd* const cmd = __osw_next_cmd(queue());
      __osw_push_gl_cmd(state(), glGetAttribLocation_op::op, 2, slots, 0);
      EXPECT_EQ(queue()->last_result, 100u + static_cast<u32>(last));
      EXPECT_EQ(cmd->result, 100u + static_cast<u32>(last));
    });
  }
}

TEST_F(push_test, a_result_of_an_earlier_command_is_not_kept) {
  begin();
  driver::set_result<glCreateProgram_op>(9);
  __osw_push_gl_cmd(state(), glCreateProgram_op::op, 0, nullptr, 0);
  __osw_send_sync_cmd(state());
  EXPECT_EQ(queue()->last_result, 9u) << "a type 3 record took the result away";
  push_hints(1);
  __osw_send_sync_cmd(state());
  EXPECT_EQ(queue()->last_result, 0u);
}

TEST_F(push_test, results_through_pointers_are_written_before_the_push_returns) {
  begin();
  for (GLint round = 1; round <= 100; ++round) {
    GLint value = 0;
    driver::on_call<glGetIntegerv_op>([round](driver::live_call& call) {
      std::atomic_ref<GLint>(*reinterpret_cast<GLint*>(call.what.arguments[1])).store(round);
    });
    const u64 slots[] = {GL_MAX_LIGHTS, reinterpret_cast<u64>(&value)};
    __osw_push_gl_cmd(state(), glGetIntegerv_op::op, 2, slots, 0);
    EXPECT_EQ(value, round);
  }
}

}  // namespace
