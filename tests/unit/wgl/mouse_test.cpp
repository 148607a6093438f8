// The mouse over a window that is spread: it is the application's, as if the parts were not there.
#include <gtest/gtest.h>

#include "support/wgl_scene.h"

namespace {

struct wgl_mouse_test : library::process_test {};

// The middle of what a part shows.
POINT middle_of(const platform::window_facts& child) {
  return {(child.rect.left + child.rect.right) / 2, (child.rect.top + child.rect.bottom) / 2};
}

// Over the middle of four parts.
constexpr RECT over_all = {860, 440, 1060, 640};

TEST_F(wgl_mouse_test, over_each_part_it_finds_the_application_s_window) {
  library::start({.parts = 4});
  const library::rendering rendered = library::start_rendering(over_all);
  const std::vector<platform::window_facts> children = scene::child_windows(rendered.window.hwnd);
  ASSERT_EQ(children.size(), 4u);
  for (const platform::window_facts& child : children) {
    EXPECT_TRUE(child.style & WS_VISIBLE);
    EXPECT_FALSE(IsRectEmpty(&child.rect));
    EXPECT_EQ(platform::window_at(middle_of(child)), rendered.window.hwnd);
  }
}

TEST_F(wgl_mouse_test, after_a_move_and_a_second_binding_too) {
  library::start({.parts = 4});
  const library::rendering rendered = library::start_rendering({0, 0, 50, 50});
  scene::place(rendered.window.hwnd, over_all);
  EXPECT_TRUE(osw_wglMakeCurrent(nullptr, nullptr));
  EXPECT_TRUE(osw_wglMakeCurrent(rendered.window.hdc, rendered.context));
  for (const platform::window_facts& child : scene::child_windows(rendered.window.hwnd)) {
    EXPECT_FALSE(IsRectEmpty(&child.rect));
    EXPECT_EQ(platform::window_at(middle_of(child)), rendered.window.hwnd);
  }
}

TEST_F(wgl_mouse_test, a_control_of_the_application_s_own_still_takes_it) {
  library::start({.parts = 4});
  const library::app_window window = library::open_window(over_all);
  const HWND control =
      platform::create_window({.rect = {90, 90, 110, 110}, .style = WS_CHILD | WS_VISIBLE, .parent = window.hwnd});
  library::start_rendering_in(window);
  EXPECT_EQ(platform::window_at({960, 540}), control);
  EXPECT_EQ(platform::window_at({940, 520}), window.hwnd);
}

}  // namespace
