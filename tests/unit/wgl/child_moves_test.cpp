// Child windows of another thread than the one that moves their parent: when they follow, and who waits for whom.
#include <gtest/gtest.h>

#include <thread>

#include "support/wgl_scene.h"

namespace {

using scene::edges;
using scene::edges_of;

constexpr RECT over_seam = {860, 100, 1160, 300};
constexpr RECT elsewhere = {900, 120, 1300, 220};
const std::vector<edges> shares_elsewhere = {{900, 120, 960, 220}, {960, 120, 1300, 220}};

// A window of the test's own thread, drawn to by another one, whose children are in it.
struct child_moves_test : library::process_test, testing::WithParamInterface<library::path> {
  void SetUp() override {
    library::start({.way = GetParam()});
    window = library::open_window(over_seam);
    drawing = library::start_thread();
    library::run(drawing, [this] { rendered = library::start_rendering_in(window); });
  }
  void TearDown() override {
    EXPECT_TRUE(platform::stalls().empty());
    library::end_thread(drawing);
    process_test::TearDown();
  }

  std::vector<edges> children() const {
    std::vector<edges> found;
    for (const platform::window_facts& child : scene::child_windows(window.hwnd)) found.push_back(edges_of(child.rect));
    return found;
  }
  std::vector<edges> remembered() const {
    const __osw_window_mapping& mapping = scene::mapping_of(window.hwnd);
    return {edges_of(mapping.parts[0].screen_rect), edges_of(mapping.parts[1].screen_rect)};
  }
  void swap() {
    library::run(drawing, [this] { EXPECT_TRUE(osw_wglSwapBuffers(window.hdc)); });
  }

  library::app_window window;
  library::app_thread_pointer drawing;
  library::rendering rendered;
};

int questions() {
  return platform::call_count("SendMessageTimeoutA");
}

TEST_P(child_moves_test, a_thread_that_takes_messages_has_moved_its_children_before_the_mover_goes_on) {
  std::atomic<bool> done{false};
  library::post(drawing, [&] {
    while (!done.load()) {
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
      platform::pump();
    }
  });
  for (const RECT& rect : {elsewhere, over_seam, elsewhere}) {
    scene::place(window.hwnd, rect);
    const LONG seam = 960;
    EXPECT_EQ(children(), (std::vector<edges>{{rect.left, rect.top, seam, rect.bottom},
                                              {seam, rect.top, rect.right, rect.bottom}}));
    EXPECT_EQ(remembered(), children());
  }
  done.store(true);
  library::wait(drawing);
}

TEST_P(child_moves_test, a_thread_that_takes_none_is_asked_once) {
  scene::place(window.hwnd, elsewhere);
  EXPECT_EQ(children(), (std::vector<edges>{{900, 120, 1000, 320}, {1000, 120, 1200, 320}}));
  EXPECT_EQ(questions(), 1);
  for (LONG x = 0; x < 20; ++x) scene::place(window.hwnd, {900 + x, 120, 1300 + x, 220});
  EXPECT_EQ(questions(), 1);
}

TEST_P(child_moves_test, its_children_follow_at_its_next_swap) {
  scene::place(window.hwnd, elsewhere);
  platform::clear_position_calls();
  swap();
  EXPECT_EQ(children(), shares_elsewhere);
  EXPECT_EQ(remembered(), shares_elsewhere);
  EXPECT_EQ(platform::position_calls().size(), 2u);
  // Once is enough.
  swap();
  EXPECT_EQ(platform::position_calls().size(), 2u);
}

TEST_P(child_moves_test, its_children_follow_at_its_next_swap_of_a_plane) {
  scene::place(window.hwnd, elsewhere);
  library::run(drawing, [this] { EXPECT_TRUE(osw_wglSwapLayerBuffers(window.hdc, 1)); });
  EXPECT_EQ(children(), shares_elsewhere);
}

TEST_P(child_moves_test, its_children_follow_at_its_next_binding) {
  scene::place(window.hwnd, elsewhere);
  library::run(drawing, [this] {
    EXPECT_TRUE(osw_wglMakeCurrent(nullptr, nullptr));
    EXPECT_NE(children(), shares_elsewhere);
    EXPECT_TRUE(osw_wglMakeCurrent(window.hdc, rendered.context));
  });
  EXPECT_EQ(children(), shares_elsewhere);
}

// What was posted meanwhile is older than what the thread has applied itself, and harmless.
TEST_P(child_moves_test, messages_that_are_taken_late_change_nothing) {
  scene::place(window.hwnd, over_seam);
  scene::place(window.hwnd, elsewhere);
  swap();
  library::run(drawing, [] { platform::pump(); });
  EXPECT_EQ(children(), shares_elsewhere);
}

TEST_P(child_moves_test, a_thread_that_takes_messages_again_is_asked_again) {
  scene::place(window.hwnd, elsewhere);
  EXPECT_EQ(questions(), 1);
  library::run(drawing, [] { platform::pump(); });
  swap();
  scene::place(window.hwnd, over_seam);
  EXPECT_EQ(questions(), 2);
}

// Another thread draws to the window now than the one whose children are in it.
TEST_P(child_moves_test, children_of_a_third_thread_are_left_for_that_one) {
  library::run(drawing, [] { EXPECT_TRUE(osw_wglMakeCurrent(nullptr, nullptr)); });
  const library::app_thread_pointer other = library::start_thread();
  library::run(other, [this] { EXPECT_TRUE(osw_wglMakeCurrent(window.hdc, rendered.context)); });
  scene::place(window.hwnd, elsewhere);
  library::run(other, [this] { EXPECT_TRUE(osw_wglSwapBuffers(window.hdc)); });
  EXPECT_NE(children(), shares_elsewhere);
  library::run(other, [] { EXPECT_TRUE(osw_wglMakeCurrent(nullptr, nullptr)); });
  library::end_thread(other);
  library::run(drawing, [this] { EXPECT_TRUE(osw_wglMakeCurrent(window.hdc, rendered.context)); });
  EXPECT_EQ(children(), shares_elsewhere);
}

INSTANTIATE_TEST_SUITE_P(, child_moves_test, testing::Values(library::path::threaded, library::path::sequential));

}  // namespace
