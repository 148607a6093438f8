// The timer that hands a list over once the program is idle, so that the last frame does not stay unseen.
#include "pipeline/idle.h"
#include "platform/faults.h"
#include "support/allocation.h"
#include "support/issuing.h"

namespace {

using namespace issuing;

struct idle_test : pipeline_test {
  void begin(const library::process_setup& setup = {.query_on_app_thread = false}) {
    library::start(setup);
    rendered = library::start_rendering();
    if (state()->mode == mode_threaded) empty_list();
    queue()->send_sync_count = 0;
    driver::clear_calls();
  }
  bool swap() const { return osw_wglSwapBuffers(rendered.window.hdc); }
  library::rendering rendered;
};

void expect_one_timer() {
  const std::vector<platform::timer_facts> timers = platform::timers();
  ASSERT_EQ(timers.size(), 1u);
  EXPECT_EQ(timers[0].hwnd, nullptr);
  EXPECT_EQ(timers[0].thread_id, GetCurrentThreadId());
  EXPECT_EQ(timers[0].milliseconds, 10u);
  EXPECT_EQ(state()->idle_timer, timers[0].id);
}

TEST_F(idle_test, each_of_the_calls_that_may_be_the_last_arms_one_timer) {
  begin();
  EXPECT_TRUE(platform::timers().empty()) << "a binding armed one";
  const std::function<void()> calls[] = {[this] { swap(); }, [] { osw_glFlush(); }, [] { osw_glFinish(); },
                                         [this] { osw_wglSwapLayerBuffers(rendered.window.hdc, 1); }};
  int armed = 0;
  for (const auto& call : calls) {
    call();
    ++armed;
    expect_one_timer();
    for (const auto& again : calls) again();
    EXPECT_EQ(platform::call_count("SetTimer"), armed) << "a second one was armed";
    EXPECT_EQ(platform::run_timers(), 1);
    EXPECT_TRUE(platform::timers().empty());
    EXPECT_EQ(state()->idle_timer, 0u);
  }
}

TEST_F(idle_test, other_calls_arm_none) {
  begin();
  osw_glHint(GL_FOG_HINT, 1);
  osw_glGetError();
  osw_glEnd();
  osw_wglSwapIntervalEXT(1);
  push_hints(5000);
  EXPECT_EQ(platform::call_count("SetTimer"), 0);
}

TEST_F(idle_test, the_timer_hands_the_list_over_and_changes_nothing_else) {
  begin();
  osw_glHint(GL_FOG_HINT, 7);
  EXPECT_TRUE(swap());
  ASSERT_TRUE(wait_for_idle_workers());
  EXPECT_TRUE(driver::calls_of<wglSwapBuffers_op>().empty()) << "swapped before the hand-over";
  __osw_cmd** const filled = queue()->fill_list;
  EXPECT_EQ(*queue()->fill_count, 2u);
  EXPECT_EQ(platform::run_timers(), 1);
  EXPECT_EQ(queue()->read_list, filled);
  EXPECT_EQ(*queue()->read_count, 2u) << "a command was added";
  EXPECT_EQ(*queue()->fill_count, 0u);
  ASSERT_TRUE(wait_for_idle_workers());
  EXPECT_EQ(driver::calls_of<wglSwapBuffers_op>().size(), 2u);
  for (int part = 0; part < 2; ++part) {
    EXPECT_EQ(library::part_calls(rendered, part), std::vector{driver::expect<glHint_op>(GL_FOG_HINT, 7)});
  }
  EXPECT_EQ(queue()->full_count, 0u);
  EXPECT_EQ(queue()->send_sync_count, 0u);
  EXPECT_EQ(masks_of(queue()).sync, 0u);
  EXPECT_EQ(state()->frame_count, 1);
}

TEST_F(idle_test, an_empty_list_is_not_handed_over) {
  begin();
  swap();
  osw_glGetError();
  EXPECT_EQ(*queue()->fill_count, 0u);
  __osw_cmd** const filled = queue()->fill_list;
  EXPECT_EQ(platform::run_timers(), 1);
  EXPECT_EQ(queue()->fill_list, filled);
  EXPECT_EQ(queue()->full_count, 0u);
  EXPECT_TRUE(platform::timers().empty());
  swap();
  expect_one_timer();
}

TEST_F(idle_test, the_timer_waits_for_no_replay) {
  begin();
  const gate_pointer gate = hold_in<glBegin_op>(rendered.children[1]);
  osw_glBegin(GL_POINTS);
  osw_glFlush();
  EXPECT_EQ(platform::run_timers(), 1);
  EXPECT_EQ(*queue()->fill_count, 0u);
  ASSERT_TRUE(wait_until_held(*gate));
  ASSERT_TRUE(wait_for_masks(queue(), [](const masks& now) { return now.done == 1; }));
  open(*gate);
  empty_list();
  EXPECT_EQ(driver::calls_of<glFlush_op>().size(), 2u);
}

TEST_F(idle_test, after_the_timer_the_next_frames_go_on_as_ever) {
  begin();
  std::vector<driver::call> expected;
  for (u32 frame = 0; frame < 50; ++frame) {
    push_hints(frame, 100 * frame);
    for (const driver::call& one : hints(frame, 100 * frame)) expected.push_back(one);
    swap();
    if (frame % 3) platform::run_timers();
    if (frame % 4 == 0) osw_glGetError(), expected.push_back(driver::expect<glGetError_op>());
  }
  empty_list();
  for (int part = 0; part < 2; ++part) EXPECT_EQ(library::part_calls(rendered, part), expected);
  EXPECT_EQ(driver::calls_of<wglSwapBuffers_op>().size(), 100u);
  EXPECT_EQ(queue()->full_count, 0u);
}

TEST_F(idle_test, a_message_that_comes_after_the_timer_s_end_does_nothing) {
  begin();
  swap();
  const platform::timer_facts timer = platform::timers().at(0);
  EXPECT_EQ(platform::run_timers(), 1);
  osw_glHint(GL_FOG_HINT, 1);
  timer.procedure(nullptr, WM_TIMER, timer.id, 0);
  EXPECT_EQ(*queue()->fill_count, 1u) << "a timer that was gone handed the list over";
  swap();
  timer.procedure(nullptr, WM_TIMER, timer.id, 0);
  EXPECT_EQ(*queue()->fill_count, 2u);
  expect_one_timer();
}

TEST_F(idle_test, a_timer_of_a_released_context_does_nothing) {
  begin();
  swap();
  EXPECT_TRUE(osw_wglMakeCurrent(nullptr, nullptr));
  EXPECT_EQ(driver::calls_of<wglSwapBuffers_op>().size(), 2u);
  EXPECT_EQ(platform::run_timers(), 1);
  EXPECT_EQ(*queue()->fill_count, 0u);
  EXPECT_TRUE(platform::timers().empty());
}

TEST_F(idle_test, a_timer_that_cannot_be_had_is_tried_again) {
  begin();
  platform::fail_call("SetTimer", 1);
  EXPECT_TRUE(swap());
  EXPECT_TRUE(platform::timers().empty());
  EXPECT_EQ(state()->idle_timer, 0u);
  EXPECT_TRUE(swap());
  expect_one_timer();
}

TEST_F(idle_test, the_end_of_the_thread_takes_the_timer_back) {
  library::start({.query_on_app_thread = false});
  allocation::watch();
  library::run_on_new_thread([] {
    const library::rendering drawn = library::start_rendering();
    osw_glFlush();
    expect_one_timer();
    DestroyWindow(drawn.window.hwnd);
  });
  EXPECT_EQ(platform::call_count("KillTimer"), 1);
  EXPECT_TRUE(platform::timers().empty());
  ASSERT_TRUE(platform::wait_for_live_threads(0));
  EXPECT_EQ(allocation::live_blocks(), 0);
  allocation::stop_watching();
}

TEST_F(idle_test, the_end_of_the_process_takes_its_thread_s_timer_back) {
  begin();
  swap();
  EXPECT_TRUE(platform::exit_process());
  EXPECT_TRUE(platform::timers().empty());
}

TEST_F(idle_test, each_thread_has_its_own) {
  begin();
  swap();
  const library::app_thread_pointer other = library::start_thread();
  library::run(other, [] {
    library::start_rendering();
    osw_glFlush();
    EXPECT_EQ(platform::timers().size(), 2u);
    EXPECT_EQ(platform::run_timers(), 1);
    EXPECT_EQ(*queue()->fill_count, 0u);
  });
  EXPECT_EQ(*queue()->fill_count, 1u) << "another thread's timer handed this thread's list over";
  expect_one_timer();
  library::end_thread(other);
}

TEST_F(idle_test, the_sequential_path_has_none) {
  begin({.way = library::path::sequential});
  osw_glFlush();
  osw_glFinish();
  EXPECT_TRUE(swap());
  EXPECT_EQ(platform::call_count("SetTimer"), 0);
}

TEST_F(idle_test, a_bypassed_process_has_none) {
  library::start({.active = false});
  const library::rendering drawn = library::start_rendering();
  osw_glFlush();
  osw_glFinish();
  EXPECT_TRUE(osw_wglSwapBuffers(drawn.window.hdc));
  EXPECT_EQ(platform::call_count("SetTimer"), 0);
}

}  // namespace
