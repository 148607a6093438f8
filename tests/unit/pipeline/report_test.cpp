// A list that is reported and not waited for: it is handed over while its thread does something else.
#include <atomic>
#include <thread>

#include "support/issuing.h"

namespace {

using namespace issuing;

struct report_test : pipeline_test {
  void begin() {
    library::start({.query_on_app_thread = false});
    rendered = library::start_rendering();
    empty_list();
    queue()->send_sync_count = 0;
    driver::clear_calls();
  }

  // A worker that is held inside a list, and a second list with one command, which is being filled.
  gate_pointer hold_a_worker() {
    const gate_pointer gate = hold_in<glBegin_op>(rendered.children[1]);
    osw_glBegin(GL_POINTS);
    finish_list(state());
    EXPECT_TRUE(wait_until_held(*gate));
    push_hints(1);
    return gate;
  }

  void expect_hints(u32 count, u32 lists) {
    empty_list();
    for (int part = 0; part < 2; ++part) {
      std::vector<driver::call> expected = hints(count);
      if (lists > 1) expected.insert(expected.begin(), driver::expect<glBegin_op>(GL_POINTS));
      EXPECT_EQ(library::part_calls(rendered, part), expected) << "part " << part;
    }
  }

  library::rendering rendered;
};

TEST_F(report_test, a_finished_list_is_replayed_without_another_call) {
  begin();
  push_hints(3);
  finish_list(state());
  ASSERT_TRUE(wait_for_idle_workers());
  for (int part = 0; part < 2; ++part) EXPECT_EQ(library::part_calls(rendered, part), hints(3));
  EXPECT_EQ(queue()->full_count, 0u);
  EXPECT_EQ(queue()->send_sync_count, 0u);
  EXPECT_EQ(queue()->last_sync_flag, 1u);
}

TEST_F(report_test, an_offered_list_is_replayed_without_another_call) {
  begin();
  push_hints(3);
  offer_list(state());
  ASSERT_TRUE(wait_for_idle_workers());
  for (int part = 0; part < 2; ++part) EXPECT_EQ(library::part_calls(rendered, part), hints(3));
}

TEST_F(report_test, an_empty_list_is_not_reported) {
  begin();
  __osw_cmd** const filled = queue()->fill_list;
  finish_list(state());
  offer_list(state());
  EXPECT_EQ(queue()->report, list_kept);
  EXPECT_EQ(masks_of(queue()).done & queue()->app_bit, 0u);
  EXPECT_EQ(queue()->fill_list, filled);
}

TEST_F(report_test, what_follows_a_finished_list_waits_for_its_hand_over) {
  begin();
  const gate_pointer gate = hold_a_worker();
  __osw_cmd** const filled = queue()->fill_list;
  finish_list(state());
  std::atomic<bool> is_open = false;
  std::thread opener([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    is_open = true;
    open(*gate);
  });
  push_hints(1, 1);
  EXPECT_TRUE(is_open) << "the next command did not wait";
  EXPECT_NE(queue()->fill_list, filled);
  EXPECT_EQ(*queue()->fill_count, 1u);
  opener.join();
  expect_hints(2, 2);
}

TEST_F(report_test, what_follows_an_offered_list_goes_on_in_it) {
  begin();
  const gate_pointer gate = hold_a_worker();
  __osw_cmd** const filled = queue()->fill_list;
  for (u32 i = 1; i < 1000; ++i) {
    offer_list(state());
    push_hints(1, i);
  }
  EXPECT_EQ(queue()->fill_list, filled);
  EXPECT_EQ(*queue()->fill_count, 1000u);
  EXPECT_EQ(masks_of(queue()).done & queue()->app_bit, 0u) << "the report was not taken back";
  open(*gate);
  expect_hints(1000, 2);
}

TEST_F(report_test, a_finished_list_that_is_offered_again_stays_finished) {
  begin();
  const gate_pointer gate = hold_a_worker();
  finish_list(state());
  offer_list(state());
  EXPECT_EQ(queue()->report, list_finished);
  open(*gate);
  expect_hints(1, 2);
}

TEST_F(report_test, an_offered_list_that_is_finished_is_finished) {
  begin();
  const gate_pointer gate = hold_a_worker();
  offer_list(state());
  finish_list(state());
  EXPECT_EQ(queue()->report, list_finished);
  open(*gate);
  expect_hints(1, 2);
}

// Whether the flip has come by then or not, nothing is lost or repeated and the order stays.
TEST_F(report_test, reports_at_any_moment_lose_nothing) {
  begin();
  std::vector<driver::call> expected;
  for (u32 i = 0; i < 3000; ++i) {
    push_hints(1, i);
    expected.push_back(hints(1, i).front());
    if (i % 7 == 0) finish_list(state());
    if (i % 3 == 0) offer_list(state());
    if (i % 50 == 0) osw_glGetError(), expected.push_back(driver::expect<glGetError_op>());
    if (i % 100 == 0) {
      ASSERT_TRUE(wait_for_idle_workers());
    }
  }
  empty_list();
  for (int part = 0; part < 2; ++part) EXPECT_EQ(library::part_calls(rendered, part), expected);
  EXPECT_EQ(queue()->full_count, 0u);
}

}  // namespace
