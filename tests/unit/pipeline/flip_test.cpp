// The hand-over of a list among the issuing thread, the workers and the swap thread, with single workers held back.
#include "support/issuing.h"

namespace {

using namespace issuing;

struct flip_test : pipeline_test {
  void begin(int parts = 2) {
    library::start({.parts = parts, .query_on_app_thread = false});
    held = start_renderer();
    driver::clear_calls();
  }
  u64 received(int part) const {
    return driver::context(held.rendered.children[static_cast<std::size_t>(part)]).gl_calls;
  }
  HGLRC child(int part) const { return held.rendered.children[static_cast<std::size_t>(part)]; }
  renderer held;
};

void push_begin() {
  const u64 slots[] = {GL_POINTS};
  __osw_push_gl_cmd(state(), glBegin_op::op, 1, slots, 0);
}

TEST_F(flip_test, workers_start_with_the_empty_list_and_stand_at_the_start) {
  library::start({.parts = 4});
  library::run_on_new_thread([] {
    __osw_thread_state* own = __osw_fetch_thread_state();
    ASSERT_EQ(__osw_create_cmd_queue(own), 1u);
    ASSERT_EQ(__osw_start_threads(GetCurrentThread()), 1u);
    ASSERT_TRUE(wait_for_masks(queue(), [](const masks& now) { return now.done == 0xFu; }));
    for (int part = 0; part < 4; ++part) {
      EXPECT_TRUE(platform::wait_until_asleep(own->started.worker_thread_id[part]));
    }
    EXPECT_TRUE(platform::wait_until_asleep(own->started.swap_thread_id));
    const masks now = masks_of(queue());
    EXPECT_EQ(now.start, 0xFFFFFFFFu);
    EXPECT_EQ(now.sync, 0u) << "an empty list ended in a synchronous command";
    EXPECT_EQ(now.exit, 0u);
    EXPECT_EQ(queue()->read_list, &queue()->list_a) << "somebody flipped early";

    __osw_send_sync_cmd(own);
    EXPECT_EQ(queue()->read_list, &queue()->list_b);
    ASSERT_TRUE(wait_for_masks(queue(), [](const masks& later) { return later.start == 0x8000000Fu; }))
        << "bits above the workers' were set again";
  });
  EXPECT_EQ(driver::calls_of<wglMakeCurrent_op>().size(), 0u);
}

TEST_F(flip_test, an_empty_list_is_replayed_by_nobody) {
  begin();
  library::run(held.thread, [] {
    ASSERT_TRUE(wait_for_idle_workers());
    for (int round = 0; round < 3; ++round) {
      __osw_cmd** const filled = queue()->fill_list;
      EXPECT_EQ(*queue()->fill_count, 0u);
      EnterCriticalSection(&queue()->done_lock);
      queue()->done_mask |= queue()->app_bit;
      WakeConditionVariable(&queue()->done_cond);
      LeaveCriticalSection(&queue()->done_lock);
      ASSERT_TRUE(wait_for_masks(queue(), [](const masks& now) { return !(now.start & app_mask_bit); }));
      EnterCriticalSection(&queue()->start_lock);
      queue()->start_mask |= queue()->app_bit;
      LeaveCriticalSection(&queue()->start_lock);
      ASSERT_TRUE(wait_for_idle_workers());
      EXPECT_EQ(queue()->read_list, filled);
      EXPECT_EQ(*queue()->read_count, 0u);
      EXPECT_EQ(masks_of(queue()).sync, 0u);
    }
    push_hints(3);
    empty_list();
  });
  for (int part = 0; part < 2; ++part) EXPECT_EQ(received(part), 3u);
}

TEST_F(flip_test, nobody_flips_while_a_part_is_behind) {
  begin();
  const gate_pointer gate = hold_in<glBegin_op>(child(0));
  library::run(held.thread, [] {
    push_begin();
    push_hints(4999);
  });
  ASSERT_TRUE(wait_until_held(*gate));
  __osw_cmd** const replayed = held.queue->read_list;
  library::post(held.thread, [] { push_hints(5000, 5000); });
  // Part 1 is through, part 0 holds everybody up, and the issuing thread is one full list ahead.
  ASSERT_TRUE(wait_for_masks(held.queue, [](const masks& now) { return now.done == (app_mask_bit | 2); }));
  ASSERT_TRUE(platform::wait_until_asleep(held.thread->id));
  EXPECT_TRUE(platform::wait_until_asleep(held.worker_ids[1]));
  EXPECT_EQ(held.queue->read_list, replayed);
  EXPECT_EQ(*held.queue->fill_count, 5000u);
  EXPECT_EQ(received(1), 5000u);
  EXPECT_EQ(masks_of(held.queue).sync, 0u);
  open(*gate);
  library::wait(held.thread);
  library::run(held.thread, [] { empty_list(); });
  for (int part = 0; part < 2; ++part) EXPECT_EQ(received(part), 10000u);
}

TEST_F(flip_test, a_synchronous_flush_returns_after_the_last_part) {
  begin(4);
  const gate_pointer gate = hold_in<glBegin_op>(child(2));
  library::post(held.thread, [] {
    push_hints(100);
    push_begin();
    __osw_push_gl_cmd(state(), glGetError_op::op, 0, nullptr, 0);
    // The flip has opened the start for this thread too, and it has closed it again.
    EXPECT_EQ(masks_of(queue()).start & app_mask_bit, app_mask_bit);
    EXPECT_EQ(masks_of(queue()).sync, 0u);
  });
  ASSERT_TRUE(wait_until_held(*gate));
  ASSERT_TRUE(wait_for_masks(held.queue, [](const masks& now) { return now.sync == 0xBu; }));
  ASSERT_TRUE(wait_for_masks(held.queue, [](const masks& now) { return now.done == 0xBu; }));
  ASSERT_TRUE(platform::wait_until_asleep(held.thread->id));
  for (const int part : {0, 1, 3}) EXPECT_EQ(received(part), 102u);
  EXPECT_EQ(received(2), 101u) << "the call that it is held in was noted before";
  open(*gate);
  library::wait(held.thread);
  EXPECT_EQ(received(2), 102u);
}

TEST_F(flip_test, a_full_flush_waits_for_no_replay) {
  begin();
  const gate_pointer gate = hold_in<glBegin_op>(child(0));
  library::run(held.thread, [] {
    push_begin();
    push_hints(4999);
    EXPECT_EQ(*queue()->fill_count, 0u);
    push_hints(4999, 5000);
    EXPECT_EQ(*queue()->fill_count, 4999u);
  });
  ASSERT_TRUE(wait_until_held(*gate));
  open(*gate);
  library::run(held.thread, [] { empty_list(); });
  for (int part = 0; part < 2; ++part) EXPECT_EQ(received(part), 9999u);
}

TEST_F(flip_test, a_flush_right_after_another_waits_for_bits_that_miss) {
  begin(16);
  library::run(held.thread, [] {
    platform::set_spurious_wakes(3);
    for (u32 round = 0; round < 500; ++round) {
      __osw_push_gl_cmd(state(), glGetError_op::op, 0, nullptr, 0);
      if (round % 3 == 0) push_hints(1);
      if (round % 5 == 0) __osw_send_sync_cmd(state());
    }
    empty_list();
    platform::set_spurious_wakes(0);
  });
  for (int part = 0; part < 16; ++part) EXPECT_EQ(received(part), 500u + 167u);
}

// A worker that has reported its replay and is held before it says that it is done.
struct {
  DWORD id = 0;
  const CRITICAL_SECTION* done_lock = nullptr;
  gate held;
} late_worker;

void hold_late_worker(const CRITICAL_SECTION* section) {
  if (section == late_worker.done_lock && GetCurrentThreadId() == late_worker.id) pass(late_worker.held);
}

TEST_F(flip_test, a_flush_waits_for_a_worker_that_has_answered_and_is_not_done) {
  begin();
  library::run(held.thread, [] { ASSERT_TRUE(wait_for_idle_workers()); });
  late_worker.id = held.worker_ids[0];
  late_worker.done_lock = &held.queue->done_lock;
  platform::before_entering(hold_late_worker);
  library::run(held.thread, [] { __osw_push_gl_cmd(state(), glGetError_op::op, 0, nullptr, 0); });
  ASSERT_TRUE(wait_until_held(late_worker.held));
  __osw_cmd** const replayed = held.queue->read_list;
  library::post(held.thread, [] {
    push_hints(3);
    empty_list();
  });
  ASSERT_TRUE(wait_for_masks(held.queue, [](const masks& now) { return now.done == (app_mask_bit | 2); }));
  ASSERT_TRUE(platform::wait_until_asleep(held.thread->id));
  ASSERT_TRUE(platform::wait_until_asleep(held.state->started.swap_thread_id));
  EXPECT_EQ(held.queue->read_list, replayed) << "the lists were exchanged under a worker";
  EXPECT_EQ(masks_of(held.queue).sync, 0u) << "the answer to the first flush was kept for the second";
  EXPECT_EQ(received(1), 1u);
  platform::before_entering(nullptr);
  open(late_worker.held);
  library::wait(held.thread);
  for (int part = 0; part < 2; ++part) EXPECT_EQ(received(part), 1u + 3u);
}

TEST_F(flip_test, one_part_keeps_to_the_same_rules) {
  begin(1);
  EXPECT_EQ(held.queue->worker_bits, 1u);
  EXPECT_EQ(held.queue->all_bits, 0x80000001u);
  const gate_pointer gate = hold_in<glBegin_op>(child(0));
  library::run(held.thread, [] {
    push_begin();
    push_hints(4999);
  });
  ASSERT_TRUE(wait_until_held(*gate));
  library::post(held.thread, [] { push_hints(5000); });
  ASSERT_TRUE(wait_for_masks(held.queue, [](const masks& now) { return now.done == app_mask_bit; }));
  open(*gate);
  library::wait(held.thread);
  library::run(held.thread, [] { empty_list(); });
  EXPECT_EQ(received(0), 10000u);
}

TEST_F(flip_test, no_party_holds_two_locks_or_a_lock_in_the_driver) {
  begin(4);
  library::run(held.thread, [] {
    for (int round = 0; round < 20; ++round) {
      push_hints(1000);
      __osw_push_gl_cmd(state(), glGetError_op::op, 0, nullptr, 0);
    }
  });
  EXPECT_EQ(platform::most_locks_held(), 1);
}

TEST_F(flip_test, a_worker_s_own_slots_stay_empty) {
  begin();
  driver::on_call<glBegin_op>([](driver::live_call&) {
    EXPECT_EQ(TlsGetValue(__osw_state_slot), nullptr);
    EXPECT_EQ(TlsGetValue(__osw_ctrl_slot), nullptr);
  });
  library::run(held.thread, [] {
    push_begin();
    empty_list();
    const auto* ctrl = static_cast<const __osw_thread_ctrl*>(TlsGetValue(__osw_ctrl_slot));
    ASSERT_NE(ctrl, nullptr);
    EXPECT_EQ(ctrl->state, state());
    EXPECT_EQ(state()->thread_ctrl, ctrl);
  });
  const std::vector<driver::call> begun = driver::calls_of<glBegin_op>();
  ASSERT_EQ(begun.size(), 2u);
  for (const driver::call& one : begun) {
    const bool of_worker = one.thread_id == held.worker_ids[0] || one.thread_id == held.worker_ids[1];
    EXPECT_TRUE(of_worker);
    EXPECT_EQ(one.context, child(one.thread_id == held.worker_ids[0] ? 0 : 1));
  }
}

}  // namespace
