// What follows when an application's window moves: its rectangles, its child windows, and what the parts are told.
#include <gtest/gtest.h>

#include "support/wgl_scene.h"

namespace {

using scene::edges;
using scene::edges_of;
using scene::in;
using steps = std::vector<scene::step>;

struct wgl_window_change_test : library::process_test {};

// Two parts of 960 by 1080. A window of 300 by 200 over the seam.
constexpr RECT over_seam = {860, 100, 1160, 300};

// What a worker gets of one recomputation.
void append_threaded(steps& wanted, HGLRC child, i32 x, i32 y, i32 width, i32 height) {
  wanted.push_back(in<glViewportOffsetZ4_op>(child, x, y));
  wanted.push_back(in<glDrawableSizeZ4_op>(child, width, height));
}

// What the application's thread calls for one recomputation.
void append_sequential(steps& wanted, const library::rendering& rendered, std::array<i32, 2> x, i32 width, i32 height) {
  const HGLRC app = rendered.context;
  const HGLRC first = rendered.children[0];
  const HGLRC second = rendered.children[1];
  const auto switched = [&](HGLRC from, HGLRC to) {
    wanted.push_back(in<wglFastSwitchContextZ4_op>(from, scene::driver_context(to), 0));
  };
  switched(app, first);
  wanted.push_back(in<glViewportOffsetZ4_op>(first, x[0], 0));
  switched(first, second);
  wanted.push_back(in<glViewportOffsetZ4_op>(second, x[1], 0));
  switched(second, app);
  wanted.push_back(in<glDrawableSizeZ4_op>(app, -1, -1));
  switched(app, first);
  wanted.push_back(in<glDrawableSizeZ4_op>(first, width, height));
  switched(first, second);
  wanted.push_back(in<glDrawableSizeZ4_op>(second, width, height));
  switched(second, app);
}

struct one_message_test : wgl_window_change_test, testing::WithParamInterface<UINT> {};

TEST_P(one_message_test, threaded) {
  library::start();
  const library::rendering rendered = library::start_rendering(over_seam);
  driver::clear_calls();
  platform::clear_position_calls();
  WINDOWPOS unused = {rendered.window.hwnd, nullptr, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE | SWP_NOCLIENTMOVE};
  unused.flags |= SWP_NOCLIENTSIZE;
  const LPARAM about = GetParam() == WM_WINDOWPOSCHANGED ? reinterpret_cast<LPARAM>(&unused) : 0;
  platform::send_message(rendered.window.hwnd, GetParam(), 0, about);
  for (int part = 0; part < 2; ++part) {
    steps wanted;
    append_threaded(wanted, rendered.children[static_cast<std::size_t>(part)], part == 0 ? 0 : -100, 0, 300, 200);
    EXPECT_EQ(scene::worker_steps(part), wanted);
  }
  EXPECT_EQ(scene::own_steps(), (steps{in<glDrawableSizeZ4_op>(rendered.context, -1, -1)}));
  const std::vector<platform::position_call> moved = platform::position_calls();
  const std::vector<platform::window_facts> children = scene::child_windows(rendered.window.hwnd);
  ASSERT_EQ(moved.size(), 2u);
  for (std::size_t part = 0; part < 2; ++part) {
    EXPECT_EQ(moved[part].hwnd, children[part].hwnd);
    EXPECT_EQ(moved[part].after, nullptr);
    EXPECT_EQ(moved[part].x, part == 0 ? 0 : 100);
    EXPECT_EQ(moved[part].y, 0);
    EXPECT_EQ(moved[part].width, part == 0 ? 100 : 200);
    EXPECT_EQ(moved[part].height, 200);
    EXPECT_EQ(moved[part].flags, 4u);
  }
}

INSTANTIATE_TEST_SUITE_P(, one_message_test, testing::Values(WM_MOVE, WM_SIZE, WM_WINDOWPOSCHANGED));

TEST_F(wgl_window_change_test, other_messages_change_nothing) {
  library::start();
  const library::rendering rendered = library::start_rendering(over_seam);
  driver::clear_calls();
  platform::clear_position_calls();
  for (const UINT message : {1u, 4u, 6u, 15u, 20u, 70u, 72u, 512u}) {
    platform::send_message(rendered.window.hwnd, message, 0, 0);
  }
  EXPECT_TRUE(driver::calls().empty());
  EXPECT_TRUE(platform::position_calls().empty());
}

// A move alone brings two messages, a move with a new size three; each runs the whole recomputation.
TEST_F(wgl_window_change_test, each_message_of_a_move_recomputes) {
  library::start();
  const library::rendering rendered = library::start_rendering(over_seam);
  driver::clear_calls();
  scene::place(rendered.window.hwnd, {900, 120, 1200, 320});
  steps wanted[2];
  for (int round = 0; round < 2; ++round) {
    append_threaded(wanted[0], rendered.children[0], 0, 0, 300, 200);
    append_threaded(wanted[1], rendered.children[1], -60, 0, 300, 200);
  }
  for (int part = 0; part < 2; ++part) EXPECT_EQ(scene::worker_steps(part), wanted[part]);
  scene::place(rendered.window.hwnd, {910, 120, 1310, 220});
  for (int round = 0; round < 3; ++round) {
    append_threaded(wanted[0], rendered.children[0], 0, 0, 400, 100);
    append_threaded(wanted[1], rendered.children[1], -50, 0, 400, 100);
  }
  for (int part = 0; part < 2; ++part) EXPECT_EQ(scene::worker_steps(part), wanted[part]);
  EXPECT_EQ(scene::own_steps(), steps(5, in<glDrawableSizeZ4_op>(rendered.context, -1, -1)));
}

TEST_F(wgl_window_change_test, the_parts_have_it_before_the_message_goes_on) {
  library::start();
  static HGLRC first_child;
  static std::vector<std::size_t> told;
  const library::app_window window = library::open_window(over_seam);
  SetWindowLongPtrA(window.hwnd, GWLP_WNDPROC,
                    reinterpret_cast<LONG_PTR>(+[](HWND hwnd, UINT message, WPARAM wparam, LPARAM lparam) -> LRESULT {
                      if (message == WM_SIZE) told.push_back(driver::gl_calls_in(first_child).size());
                      return DefWindowProcA(hwnd, message, wparam, lparam);
                    }));
  const library::rendering rendered = library::start_rendering_in(window);
  first_child = rendered.children[0];
  driver::clear_calls();
  scene::place(window.hwnd, {860, 100, 1170, 300});
  EXPECT_EQ(told, (std::vector<std::size_t>{4}));
}

TEST_F(wgl_window_change_test, sequential) {
  library::start({.way = library::path::sequential});
  const library::rendering rendered = library::start_rendering(over_seam);
  driver::clear_calls();
  scene::place(rendered.window.hwnd, {910, 100, 1310, 220});
  steps wanted;
  for (int round = 0; round < 3; ++round) append_sequential(wanted, rendered, {0, -50}, 400, 120);
  EXPECT_EQ(scene::own_steps(), wanted);
  for (int part = 0; part < 2; ++part) EXPECT_TRUE(scene::worker_steps(part).empty());
}

TEST_F(wgl_window_change_test, without_queries_on_its_thread_the_application_is_told_nothing) {
  library::start({.query_on_app_thread = false});
  const library::rendering rendered = library::start_rendering(over_seam);
  EXPECT_TRUE(driver::gl_calls_in(rendered.context).empty());
  scene::place(rendered.window.hwnd, {900, 120, 1200, 320});
  EXPECT_TRUE(driver::gl_calls_in(rendered.context).empty());
  EXPECT_FALSE(library::part_calls(rendered, 0).empty());
}

struct change_path_test : wgl_window_change_test, testing::WithParamInterface<library::path> {};

TEST_P(change_path_test, without_a_context_the_children_move_and_nobody_is_told) {
  library::start({.way = GetParam()});
  const library::rendering rendered = library::start_rendering(over_seam);
  EXPECT_TRUE(osw_wglMakeCurrent(nullptr, nullptr));
  driver::clear_calls();
  scene::place(rendered.window.hwnd, {900, 120, 1300, 220});
  EXPECT_TRUE(driver::calls().empty());
  const std::vector<platform::window_facts> children = scene::child_windows(rendered.window.hwnd);
  EXPECT_EQ(edges_of(children[0].rect), (edges{900, 120, 960, 220}));
  EXPECT_EQ(edges_of(children[1].rect), (edges{960, 120, 1300, 220}));
  EXPECT_EQ(edges_of(scene::mapping_of(rendered.window.hwnd).client_rect), (edges{0, 0, 400, 100}));
  EXPECT_EQ(edges_of(scene::mapping_of(rendered.window.hwnd).parts[1].screen_rect), (edges{960, 120, 1300, 220}));
  // They hear of it at the next binding.
  EXPECT_TRUE(osw_wglMakeCurrent(rendered.window.hdc, rendered.context));
  EXPECT_EQ(library::part_calls(rendered, 1), (std::vector{driver::expect<glViewportOffsetZ4_op>(-60, 0),
                                                           driver::expect<glDrawableSizeZ4_op>(400, 100)}));
}

// The thread that draws made the children, so that they are its own; it does not pump while the window is moved.
TEST_P(change_path_test, a_window_moved_by_a_thread_that_does_not_draw) {
  library::start({.way = GetParam()});
  const library::app_window window = library::open_window(over_seam);
  const library::app_thread_pointer thread = library::start_thread();
  library::rendering rendered;
  library::run(thread, [&] { rendered = library::start_rendering_in(window); });
  driver::clear_calls();
  platform::clear_position_calls();
  scene::place(window.hwnd, {900, 120, 1300, 220});
  EXPECT_TRUE(driver::calls().empty());
  std::vector<platform::position_call> moved = platform::position_calls();
  ASSERT_EQ(moved.size(), 7u);
  for (std::size_t i = 1; i < 7; ++i) {
    EXPECT_EQ(moved[i].flags, static_cast<UINT>(SWP_NOZORDER | SWP_ASYNCWINDOWPOS));
    EXPECT_EQ(moved[i].how, platform::delivery::posted);
    EXPECT_EQ(moved[i].width, i % 2 == 1 ? 60 : 340);
  }
  EXPECT_TRUE(platform::stalls().empty());
  EXPECT_EQ(scene::mapping_of(window.hwnd).parts[1].viewport_offset_x, -60);
  library::run(thread, [] { platform::pump(); });
  EXPECT_EQ(edges_of(platform::window(scene::mapping_of(window.hwnd).parts[1].child_hwnd).rect),
            (edges{960, 120, 1300, 220}));
  EXPECT_TRUE(driver::calls().empty());
  // The thread's next binding tells the parts.
  library::run(thread, [&] {
    EXPECT_TRUE(osw_wglMakeCurrent(nullptr, nullptr));
    driver::clear_calls();
    EXPECT_TRUE(osw_wglMakeCurrent(window.hdc, rendered.context));
    EXPECT_EQ(library::part_calls(rendered, 1), (std::vector{driver::expect<glViewportOffsetZ4_op>(-60, 0),
                                                             driver::expect<glDrawableSizeZ4_op>(400, 100)}));
  });
  library::end_thread(thread);
}

// With an empty list and with one that its worker is slow to replay: the mover waits for neither.
TEST_P(change_path_test, moving_while_the_drawing_thread_is_busy) {
  library::start({.way = GetParam()});
  const library::app_window window = library::open_window(over_seam);
  const library::app_thread_pointer thread = library::start_thread();
  library::run(thread, [&] { library::start_rendering_in(window); });
  std::atomic<bool> moved_enough{false};
  library::post(thread, [&] {
    while (!moved_enough.load()) {
      for (int i = 0; i < 100; ++i) osw_glColor3f(1, 0, 0);
      osw_glFinish();
    }
  });
  for (LONG x = 0; x < 40; ++x) scene::place(window.hwnd, {840 + x, 100, 1140 + x, 300});
  moved_enough.store(true);
  library::wait(thread);
  EXPECT_TRUE(platform::stalls().empty());
  library::end_thread(thread);
}

INSTANTIATE_TEST_SUITE_P(, change_path_test, testing::Values(library::path::threaded, library::path::sequential));

// The drawing thread's own children, moved from a thread that draws elsewhere: what is sent concerns its own window.
TEST_F(wgl_window_change_test, moving_another_window_than_the_bound_one) {
  library::start();
  const library::rendering first = library::start_rendering(over_seam);
  const library::rendering second = library::start_rendering({10, 10, 60, 40});
  driver::clear_calls();
  scene::place(first.window.hwnd, {900, 120, 1300, 220});
  EXPECT_EQ(edges_of(scene::child_windows(first.window.hwnd)[1].rect), (edges{960, 120, 1300, 220}));
  for (int part = 0; part < 2; ++part) {
    EXPECT_TRUE(library::part_calls(first, part).empty());
    steps wanted;
    for (int round = 0; round < 3; ++round) {
      append_threaded(wanted, second.children[static_cast<std::size_t>(part)], 0, 0, 50, 30);
    }
    EXPECT_EQ(scene::worker_steps(part), wanted);
  }
  EXPECT_EQ(scene::own_steps(), steps(3, in<glDrawableSizeZ4_op>(second.context, -1, -1)));
}

TEST_F(wgl_window_change_test, a_window_that_lost_its_record_is_left_alone) {
  library::start();
  const library::rendering rendered = library::start_rendering(over_seam);
  EXPECT_TRUE(osw_wglMakeCurrent(nullptr, nullptr));
  __osw_detach_window_mapping(rendered.window.hwnd);
  driver::clear_calls();
  platform::clear_position_calls();
  scene::place(rendered.window.hwnd, {0, 0, 50, 50});
  EXPECT_EQ(platform::position_calls().size(), 1u);
  EXPECT_TRUE(driver::calls().empty());
}

}  // namespace
