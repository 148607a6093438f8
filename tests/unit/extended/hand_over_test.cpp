// When a list goes to the workers by itself: in the extended mode at each swap and flush, so that a program that then
// waits for its user shows what it has drawn. In the basic mode it goes when it is full, or when a command is waited
// for.
#include <atomic>
#include <thread>

#include "support/issuing.h"
#include "wgl/records/window_mapping.h"

namespace {

using namespace issuing;

struct hand_over_test : pipeline_test {
  void begin(bool extended) {
    library::start({.query_on_app_thread = false, .extended = extended});
    rendered = library::start_rendering();
    empty_list();
    queue()->send_sync_count = 0;
    driver::clear_calls();
  }

  std::vector<driver::call> swapped_on(int part) const {
    std::vector<driver::call> found;
    for (const driver::call& call : driver::calls_of<wglSwapBuffers_op>()) {
      const auto drawn_to = driver::bits_of(state()->window_mapping->parts[part].child_hdc);
      if (call.arguments[0] == drawn_to) found.push_back(call);
    }
    return found;
  }

  library::rendering rendered;
};

using last_call = void (*)(const library::rendering&);
constexpr last_call swaps[] = {[](const library::rendering& drawn) { osw_wglSwapBuffers(drawn.window.hdc); },
                               [](const library::rendering& drawn) { osw_wglSwapLayerBuffers(drawn.window.hdc, 1); }};

TEST_F(hand_over_test, a_frame_is_shown_without_another_call) {
  begin(true);
  for (const last_call swap : swaps) {
    driver::clear_calls();
    push_hints(3);
    swap(rendered);
    ASSERT_TRUE(wait_for_idle_workers());
    for (int part = 0; part < 2; ++part) EXPECT_EQ(swapped_on(part).size(), 1u) << part;
    EXPECT_EQ(driver::calls_of<glHint_op>().size(), 6u);
  }
  EXPECT_EQ(queue()->full_count, 0u);
  EXPECT_EQ(queue()->send_sync_count, 0u);
}

TEST_F(hand_over_test, a_frame_without_a_context_is_shown_too) {
  begin(true);
  push_hints(3);
  const HDC drawn = rendered.window.hdc;
  osw_wglMakeCurrent(nullptr, nullptr);
  driver::clear_calls();
  osw_wglSwapBuffers(drawn);
  EXPECT_EQ(queue()->report, list_finished);
  ASSERT_TRUE(wait_for_idle_workers());
}

TEST_F(hand_over_test, a_program_is_at_most_one_frame_ahead) {
  begin(true);
  const gate_pointer gate = hold_in<glBegin_op>(rendered.children[1]);
  osw_glBegin(GL_POINTS);
  osw_wglSwapBuffers(rendered.window.hdc);
  ASSERT_TRUE(wait_until_held(*gate));
  push_hints(1);
  osw_wglSwapBuffers(rendered.window.hdc);
  std::atomic<bool> is_open = false;
  std::thread opener([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    is_open = true;
    open(*gate);
  });
  push_hints(1);
  EXPECT_TRUE(is_open) << "a third frame was begun";
  opener.join();
}

TEST_F(hand_over_test, the_last_flush_shows_what_came_before_it) {
  begin(true);
  push_hints(3);
  osw_glFlush();
  ASSERT_TRUE(wait_for_idle_workers());
  for (int part = 0; part < 2; ++part) {
    std::vector<driver::call> expected = hints(3);
    expected.push_back(driver::expect<glFlush_op>());
    EXPECT_EQ(library::part_calls(rendered, part), expected) << part;
  }
}

TEST_F(hand_over_test, a_thousand_flushes_wait_for_nobody) {
  begin(true);
  const gate_pointer gate = hold_in<glBegin_op>(rendered.children[1]);
  osw_glBegin(GL_POINTS);
  osw_glFlush();
  ASSERT_TRUE(wait_until_held(*gate));
  push_hints(1);
  const u32 filled = *queue()->fill_count;
  for (int i = 0; i < 1000; ++i) osw_glFlush();
  EXPECT_EQ(*queue()->fill_count, filled + 1000) << "a list was exchanged while a worker stood";
  open(*gate);
  empty_list();
  EXPECT_EQ(driver::calls_of<glFlush_op>().size(), 2002u);
}

TEST_F(hand_over_test, finishing_waits_for_the_parts) {
  begin(true);
  push_hints(3);
  osw_glFinish();
  for (int part = 0; part < 2; ++part) {
    std::vector<driver::call> expected = hints(3);
    expected.push_back(driver::expect<glFinish_op>());
    EXPECT_EQ(library::part_calls(rendered, part), expected) << part;
  }
}

TEST_F(hand_over_test, in_the_basic_mode_a_list_stays_until_it_is_full_or_waited_for) {
  begin(false);
  push_hints(3);
  osw_glFlush();
  osw_glFinish();
  for (const last_call swap : swaps) swap(rendered);
  EXPECT_EQ(*queue()->fill_count, 7u);
  EXPECT_EQ(queue()->report, list_kept);
  EXPECT_TRUE(driver::calls_of<glHint_op>().empty());
  osw_wglMakeCurrent(nullptr, nullptr);
  osw_wglSwapBuffers(rendered.window.hdc);
  EXPECT_EQ(queue()->report, list_kept);
}

}  // namespace
