// Memory captured for commands: who frees it, when, and how often.
#include <algorithm>
#include <cstring>

#include "pipeline/cmd_queue.h"
#include "support/allocation.h"
#include "support/issuing.h"

namespace {

using namespace issuing;

struct blob_test : pipeline_test {};
struct blob_part_test : pipeline_test, testing::WithParamInterface<int> {};

std::uintptr_t block(u8 fill) {
  void* memory = malloc(64);
  std::memset(memory, fill, 64);
  return reinterpret_cast<std::uintptr_t>(memory);
}

bool is_filled(u64 address, u8 fill) {
  const u8* bytes = reinterpret_cast<const u8*>(address);
  return std::all_of(bytes, bytes + 64, [fill](u8 byte) { return byte == fill; });
}

// How often each of the blocks has been freed; their order must be that of the freeing.
std::vector<std::uintptr_t> freed_among(const std::vector<std::uintptr_t>& blocks) {
  std::vector<std::uintptr_t> freed = allocation::freed();
  std::erase_if(freed, [&](std::uintptr_t one) { return std::ranges::find(blocks, one) == blocks.end(); });
  return freed;
}

// A command with blocks in slots 2, 7 and 31, behind the arguments of glHint.
std::vector<std::uintptr_t> push_with_blocks() {
  const std::vector<std::uintptr_t> blocks = {block(2), block(7), block(31)};
  u64 slots[32] = {};
  slots[2] = blocks[0];
  slots[7] = blocks[1];
  slots[31] = blocks[2];
  __osw_push_gl_cmd(state(), glHint_op::op, 32, slots, 1u << 2 | 1u << 7 | 1u << 31);
  return blocks;
}

TEST_P(blob_part_test, the_last_part_through_frees_each_block_once) {
  library::start({.parts = GetParam(), .query_on_app_thread = false});
  const renderer held = start_renderer();
  // Each part in turn is the last one.
  for (int last = 0; last < GetParam(); ++last) {
    allocation::watch();
    const gate_pointer gate = hold_in<glHint_op>(held.rendered.children[static_cast<std::size_t>(last)]);
    std::vector<std::uintptr_t> blocks;
    __osw_cmd* cmd = nullptr;
    library::run(held.thread, [&] {
      cmd = __osw_next_cmd(queue());
      blocks = push_with_blocks();
    });
    library::post(held.thread, [] { empty_list(); });
    ASSERT_TRUE(wait_until_held(*gate));
    const u32 others = held.queue->worker_bits & ~(1u << last);
    ASSERT_TRUE(wait_for_masks(held.queue, [others](const masks& now) { return now.sync == others; }));
    EXPECT_TRUE(freed_among(blocks).empty()) << "part " << last << " had not finished";
    EXPECT_TRUE(is_filled(blocks[0], 2) && is_filled(blocks[1], 7) && is_filled(blocks[2], 31));
    EXPECT_EQ(cmd->blob_mask, 1u << 2 | 1u << 7 | 1u << 31);
    EXPECT_EQ(std::atomic_ref(cmd->blob_release_count).load(), static_cast<u32>(GetParam()) - 1);
    open(*gate);
    library::wait(held.thread);
    EXPECT_EQ(freed_among(blocks), blocks) << "once each, from the lowest slot up";
    EXPECT_EQ(cmd->blob_mask, 0u);
    EXPECT_EQ(cmd->blob_release_count, static_cast<u32>(GetParam()));
    allocation::stop_watching();
    library::run(held.thread, [] { driver::clear_scripts(); });
  }
}

TEST_P(blob_part_test, every_part_sees_the_same_bytes) {
  library::start({.parts = GetParam(), .query_on_app_thread = false});
  const renderer drawing = start_renderer();
  std::atomic<int> right{0};
  driver::on_call<glCallLists_op>([&](driver::live_call& call) {
    const u8 fill = static_cast<u8>(call.what.arguments[0]);
    right += is_filled(call.what.arguments[2], fill);
  });
  constexpr int rounds = 2000;
  allocation::watch();
  library::run(drawing.thread, [] {
    for (u32 round = 0; round < rounds; ++round) {
      const u64 slots[] = {round, GL_UNSIGNED_BYTE, block(static_cast<u8>(round))};
      __osw_push_gl_cmd(state(), glCallLists_op::op, 3, slots, 1u << 2);
      if (round % 300 == 0) empty_list();
    }
    empty_list();
  });
  allocation::stop_watching();
  EXPECT_EQ(right.load(), rounds * GetParam());
  EXPECT_EQ(allocation::live_blocks(), 0);
  EXPECT_EQ(allocation::freed().size(), static_cast<std::size_t>(rounds));
}

INSTANTIATE_TEST_SUITE_P(parts, blob_part_test, testing::Values(1, 2, 4, 16));

TEST_F(blob_test, a_command_without_blobs_counts_no_release) {
  library::start({.query_on_app_thread = false});
  const renderer drawing = start_renderer();
  library::run(drawing.thread, [] {
    __osw_cmd* const cmd = __osw_next_cmd(queue());
    const std::uintptr_t own = block(1);
    const u64 slots[] = {1, 2, own};
    __osw_push_gl_cmd(state(), glHint_op::op, 3, slots, 0);
    empty_list();
    EXPECT_EQ(cmd->blob_release_count, 0u);
    EXPECT_TRUE(is_filled(own, 1));
    free(reinterpret_cast<void*>(own));
  });
}

// Fills a record as a push would, where no worker will ever see it.
void fill_record(__osw_cmd* cmd, u32 type, u32 mask, const std::vector<std::uintptr_t>& blocks) {
  cmd->type = type;
  cmd->op = glHint_op::op;
  cmd->blob_mask = mask;
  cmd->blob_release_count = 0;
  std::size_t next = 0;
  for (int slot = 0; slot < 32; ++slot) {
    if (mask >> slot & 1) cmd->args[slot] = blocks[next++];
  }
}

TEST_F(blob_test, teardown_frees_what_both_lists_still_hold) {
  library::start();
  library::run_on_new_thread([] {
    ASSERT_EQ(__osw_create_cmd_queue(__osw_fetch_thread_state()), 1u);
    allocation::watch();
    const std::vector<std::uintptr_t> blocks = {block(1), block(2), block(3), block(4), block(5)};
    const std::uintptr_t foreign = block(6);
    __osw_cmd* const read = queue()->list_a;
    __osw_cmd* const filled = queue()->list_b;
    fill_record(&read[0], __osw_cmd_gl, 0, {});  // replayed: nothing left
    fill_record(&read[1], __osw_cmd_gl, 1u << 31 | 1u << 0, {blocks[0], blocks[1]});
    fill_record(&read[2], cmd_sync, 1u << 3, {foreign});
    fill_record(&read[3], __osw_cmd_gl, 1u << 5, {blocks[2]});
    queue()->count_a = 4;
    fill_record(&filled[0], __osw_cmd_wgl, 1u << 3, {foreign});
    fill_record(&filled[1], __osw_cmd_gl, 3u << 10, {blocks[3], blocks[4]});
    fill_record(&filled[2], __osw_cmd_gl, 1u << 3, {foreign});  // beyond the count: of an earlier use
    queue()->count_b = 2;
    for (int round = 0; round < 2; ++round) {
      __osw_free_cmd_blobs(queue());
      EXPECT_EQ(allocation::freed(), blocks) << "round " << round;
      EXPECT_EQ(read[1].blob_mask | read[3].blob_mask | filled[1].blob_mask, 0u);
      EXPECT_EQ(read[2].blob_mask & filled[0].blob_mask & filled[2].blob_mask, 1u << 3);
      EXPECT_EQ(queue()->count_a, 4u);
      EXPECT_EQ(queue()->count_b, 2u);
    }
    EXPECT_EQ(read[1].blob_release_count, 2u);
    EXPECT_EQ(read[2].blob_release_count, 0u);
    EXPECT_TRUE(is_filled(foreign, 6));
    free(reinterpret_cast<void*>(foreign));
    allocation::stop_watching();
  });
}

// A block, and how many locks there were when it was freed.
using ending = std::pair<std::uintptr_t, int>;
std::vector<ending> endings;

void note_ending(std::uintptr_t freed) {
  endings.push_back({freed, platform::live_critical_sections()});
}

TEST_F(blob_test, a_queue_ends_with_its_locks_then_the_blobs_the_lists_itself_and_the_state) {
  library::start();
  const library::app_thread_pointer thread = library::start_thread();
  std::vector<std::uintptr_t> blocks;
  library::run(thread, [&] {
    ASSERT_EQ(__osw_create_cmd_queue(__osw_fetch_thread_state()), 1u);
    const std::vector<std::uintptr_t> blobs = {block(1), block(2)};
    fill_record(queue()->list_a, __osw_cmd_gl, 1u << 2, {blobs[0]});
    fill_record(queue()->list_b, __osw_cmd_gl, 1u << 7, {blobs[1]});
    queue()->count_a = queue()->count_b = 1;
    blocks = blobs;
    for (const void* one : {static_cast<void*>(queue()->list_a), static_cast<void*>(queue()->list_b),
                            static_cast<void*>(queue()), static_cast<void*>(state())}) {
      blocks.push_back(reinterpret_cast<std::uintptr_t>(one));
    }
  });
  std::vector<ending> expected;
  for (const std::uintptr_t one : blocks) expected.push_back({one, platform::live_critical_sections() - 3});
  allocation::before_free(note_ending);
  allocation::watch();
  library::end_thread(thread);
  allocation::stop_watching();
  std::erase_if(endings, [&](const ending& one) { return std::ranges::find(blocks, one.first) == blocks.end(); });
  EXPECT_EQ(endings, expected);
}

TEST_F(blob_test, the_end_of_a_thread_replays_and_frees_what_is_pending) {
  library::start({.parts = 4, .query_on_app_thread = false});
  const renderer drawing = start_renderer();
  library::run(drawing.thread, [&] { DestroyWindow(drawing.rendered.window.hwnd); });
  driver::clear_calls();
  allocation::watch();
  std::vector<std::uintptr_t> blocks;
  library::run(drawing.thread, [&] { blocks = push_with_blocks(); });
  library::end_thread(drawing.thread);
  ASSERT_TRUE(platform::wait_for_live_threads(0));
  EXPECT_EQ(freed_among(blocks), blocks);
  for (int part = 0; part < 4; ++part) {
    EXPECT_EQ(library::part_calls(drawing.rendered, part),
              std::vector{driver::expect<glHint_op>(GLenum{0}, GLenum{0})});
  }
}

TEST_F(blob_test, the_end_of_the_process_frees_once_what_some_parts_have_replayed) {
  library::start({.parts = 2, .query_on_app_thread = false});
  const renderer held = start_renderer();
  const gate_pointer gate = hold_in<glBegin_op>(held.rendered.children[1]);
  library::run(held.thread, [&held] { DestroyWindow(held.rendered.window.hwnd); });
  allocation::watch();
  std::vector<std::uintptr_t> blocks;
  const auto push_more = [&blocks] {
    for (const std::uintptr_t one : push_with_blocks()) blocks.push_back(one);
  };
  library::run(held.thread, [&] {
    push_more();  // both parts get through this one
    const u64 slots[] = {GL_POINTS};
    __osw_push_gl_cmd(state(), glBegin_op::op, 1, slots, 0);
    push_more();  // only part 0 through this one
    push_hints(4997);
    push_more();  // nobody through this one
  });
  ASSERT_TRUE(wait_until_held(*gate));
  ASSERT_TRUE(wait_for_masks(held.queue, [](const masks& now) { return now.done == 1; }));
  EXPECT_EQ(freed_among(blocks), std::vector(blocks.begin(), blocks.begin() + 3));
  EXPECT_TRUE(platform::exit_process());
  EXPECT_EQ(freed_among(blocks), blocks);
  allocation::stop_watching();
}

}  // namespace
