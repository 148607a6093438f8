// Contexts without a record and drawables without a mapping: the calls go to the system, and the application's own
// window shows the picture.
#include <gtest/gtest.h>

#include <algorithm>

#include "support/allocation.h"
#include "support/wgl_scene.h"
#include "wgl/records/glrc.h"

namespace {

using scene::in;
using scene::own_state;
using scene::own_steps;
using steps = std::vector<scene::step>;

struct wgl_without_children_test : library::process_test {};

void expect_pass_through() {
  EXPECT_EQ(own_state()->mode, mode_pass);
  EXPECT_EQ(own_state()->seq_path, 0);
  EXPECT_EQ(own_state()->has_context, 1);
  EXPECT_EQ(own_state()->gl_table, __osw_gl_table_pass);
  EXPECT_EQ(own_state()->glrc, nullptr);
  EXPECT_EQ(own_state()->window_mapping, nullptr);
  EXPECT_EQ(own_state()->pbuffer, nullptr);
}

int visible_children(HWND hwnd) {
  int visible = 0;
  for (const platform::window_facts& child : platform::children_of(hwnd)) visible += (child.style & WS_VISIBLE) != 0;
  return visible;
}

// What the thread has called of the system, GL alone.
std::vector<driver::call> gl_in(HGLRC context) {
  return driver::gl_calls_in(context);
}

struct alone_path_test : wgl_without_children_test, testing::WithParamInterface<library::path> {};

TEST_P(alone_path_test, a_context_with_attributes_on_a_new_window) {
  library::start({.way = GetParam()});
  const library::app_window window = library::open_window();
  library::start_rendering();
  const HGLRC alone = osw_wglCreateContextAttribsARB(window.hdc, nullptr, nullptr);
  ASSERT_NE(alone, nullptr);
  EXPECT_TRUE(osw_wglMakeCurrent(nullptr, nullptr));
  driver::clear_calls();
  EXPECT_TRUE(osw_wglMakeCurrent(window.hdc, alone));
  expect_pass_through();
  EXPECT_TRUE(platform::children_of(window.hwnd).empty());
  driver::clear_calls();
  osw_glClear(5);
  osw_glFinish();
  EXPECT_TRUE(osw_wglSwapBuffers(window.hdc));
  EXPECT_TRUE(osw_wglSwapLayerBuffers(window.hdc, 1));
  EXPECT_EQ(own_steps(),
            (steps{in<glClear_op>(alone, 5u), in<glFinish_op>(alone), in<wglSwapBuffers_op>(alone, window.hdc),
                   in<wglSwapLayerBuffers_op>(alone, window.hdc, 1u)}));
  EXPECT_EQ(driver::calls().size(), 4u);
  EXPECT_EQ(own_state()->frame_count, 2);
  // The result of the system is the application's.
  driver::fail_call<wglSwapBuffers_op>(1);
  EXPECT_FALSE(osw_wglSwapBuffers(window.hdc));
}

TEST_P(alone_path_test, on_a_thread_that_has_never_had_a_queue) {
  library::start({.way = GetParam()});
  const library::rendering rendered = library::start_rendering();
  const HGLRC alone = osw_wglCreateContextAttribsARB(rendered.window.hdc, nullptr, nullptr);
  const library::app_thread_pointer thread = library::start_thread();
  library::run(thread, [&] {
    const library::app_window window = library::open_window();
    EXPECT_TRUE(osw_wglMakeCurrent(window.hdc, alone));
    expect_pass_through();
    EXPECT_EQ(own_state()->cmd_queue, nullptr);
    osw_glClear(5);
    EXPECT_TRUE(osw_wglSwapBuffers(window.hdc));
    scene::place(window.hwnd, {0, 0, 50, 50});
    EXPECT_EQ(gl_in(alone), (std::vector{driver::expect<glClear_op>(5u)}));
    EXPECT_TRUE(osw_wglMakeCurrent(nullptr, nullptr));
    EXPECT_EQ(own_state()->mode, mode_no_context);
  });
  library::end_thread(thread);
}

// The children that stand over the window are hidden, and shown again for a context that draws to them.
TEST_P(alone_path_test, children_of_the_window_do_not_cover_it) {
  library::start({.way = GetParam()});
  const library::rendering rendered = library::start_rendering();
  const HWND hwnd = rendered.window.hwnd;
  const HGLRC alone = osw_wglCreateContextAttribsARB(rendered.window.hdc, nullptr, nullptr);
  EXPECT_EQ(visible_children(hwnd), 2);
  driver::clear_calls();
  EXPECT_TRUE(osw_wglMakeCurrent(rendered.window.hdc, alone));
  expect_pass_through();
  EXPECT_EQ(visible_children(hwnd), 0);
  // The workers give their contexts up.
  for (int part = 0; part < 2; ++part) {
    const HGLRC child = rendered.children[static_cast<std::size_t>(part)];
    EXPECT_EQ(scene::worker_steps(part), (steps{in<wglMakeCurrent_op>(child, nullptr, nullptr)}));
    EXPECT_EQ(driver::context(child).current_on, 0u);
  }
  // A window that moves does not bring them back, and tells nobody.
  driver::clear_calls();
  scene::place(hwnd, {0, 0, 500, 400});
  EXPECT_EQ(visible_children(hwnd), 0);
  EXPECT_TRUE(driver::calls().empty());
  EXPECT_TRUE(osw_wglSwapBuffers(rendered.window.hdc));
  EXPECT_EQ(driver::calls(), (std::vector{driver::expect<wglSwapBuffers_op>(rendered.window.hdc)}));
  EXPECT_TRUE(osw_wglMakeCurrent(rendered.window.hdc, rendered.context));
  EXPECT_EQ(visible_children(hwnd), 2);
  EXPECT_NE(own_state()->mode, mode_pass);
  EXPECT_EQ(scene::child_windows(hwnd).size(), 2u);
}

TEST_P(alone_path_test, the_context_that_found_no_slot) {
  library::start({.way = GetParam()});
  const library::rendering rendered = library::start_rendering();
  for (int i = 1; i < max_glrcs; ++i) ASSERT_NE(osw_wglCreateContext(rendered.window.hdc), nullptr);
  const HGLRC last = osw_wglCreateContext(rendered.window.hdc);
  const library::app_window window = library::open_window({0, 0, 50, 50});
  EXPECT_TRUE(osw_wglMakeCurrent(window.hdc, last));
  expect_pass_through();
  EXPECT_TRUE(platform::children_of(window.hwnd).empty());
  driver::clear_calls();
  osw_glClear(5);
  EXPECT_EQ(driver::calls(), (std::vector{driver::expect<glClear_op>(5u)}));
  EXPECT_EQ(gl_in(last).size(), 1u);
}

// Without memory for the record of its window a context with children draws to the application's window.
TEST_P(alone_path_test, a_mapping_that_found_no_memory) {
  library::start({.way = GetParam()});
  const library::app_window window = library::open_window();
  const HGLRC context = osw_wglCreateContext(window.hdc);
  allocation::fail_call(1);
  EXPECT_TRUE(osw_wglMakeCurrent(window.hdc, context));
  allocation::stop_failing();
  expect_pass_through();
  EXPECT_EQ(__osw_window_mapping_of(window.hwnd), nullptr);
  EXPECT_EQ(visible_children(window.hwnd), 0);
  driver::clear_calls();
  osw_glClear(5);
  EXPECT_TRUE(osw_wglSwapBuffers(window.hdc));
  EXPECT_EQ(own_steps(), (steps{in<glClear_op>(context, 5u), in<wglSwapBuffers_op>(context, window.hdc)}));
  EXPECT_EQ(driver::calls().size(), 2u);
  // The window is followed already, without a record; then the next binding finds memory.
  scene::place(window.hwnd, {860, 100, 1160, 300});
  EXPECT_EQ(driver::calls().size(), 2u);
  EXPECT_TRUE(osw_wglMakeCurrent(nullptr, nullptr));
  EXPECT_TRUE(osw_wglMakeCurrent(window.hdc, context));
  EXPECT_NE(own_state()->mode, mode_pass);
  EXPECT_EQ(visible_children(window.hwnd), 2);
  scene::place(window.hwnd, {850, 100, 1150, 300});
  EXPECT_EQ(scene::mapping_of(window.hwnd).parts[1].viewport_offset_x, -110);
  EXPECT_TRUE(DestroyWindow(window.hwnd));
}

INSTANTIATE_TEST_SUITE_P(, alone_path_test, testing::Values(library::path::threaded, library::path::sequential));

// A context that was told that nobody sees it is told otherwise when its picture is the one that is seen.
TEST_F(wgl_without_children_test, a_context_is_seen_again) {
  library::start();
  const library::rendering rendered = library::start_rendering();
  const library::app_window other = library::open_window({0, 0, 120, 90});
  driver::clear_calls();
  allocation::fail_call(1);
  EXPECT_TRUE(osw_wglMakeCurrent(other.hdc, rendered.context));
  allocation::stop_failing();
  expect_pass_through();
  EXPECT_EQ(gl_in(rendered.context), (std::vector{driver::expect<glDrawableSizeZ4_op>(120, 90)}));
}

// ---- windows that are destroyed while they are bound ----

struct destroyed_window_test : wgl_without_children_test, testing::WithParamInterface<library::path> {};

TEST_P(destroyed_window_test, calls_go_on_until_the_next_binding) {
  library::start({.way = GetParam()});
  const library::rendering rendered = library::start_rendering();
  const __osw_window_mapping* const mapping = own_state()->window_mapping;
  EXPECT_TRUE(DestroyWindow(rendered.window.hwnd));
  EXPECT_EQ(own_state()->window_mapping, mapping);
  driver::clear_calls();
  osw_glClear(5);
  osw_glFinish();
  library::finish();
  osw_wglSwapBuffers(rendered.window.hdc);
  library::finish();
  for (int part = 0; part < 2; ++part) {
    EXPECT_EQ(library::part_calls(rendered, part).at(0), driver::expect<glClear_op>(5u));
  }
  // Another window's change is told with what is known of the one that is gone.
  const library::rendering next = library::start_rendering({0, 0, 50, 50});
  EXPECT_NE(own_state()->window_mapping, mapping);
  EXPECT_TRUE(osw_wglMakeCurrent(nullptr, nullptr));
  EXPECT_TRUE(osw_wglDeleteContext(rendered.context));
  EXPECT_TRUE(osw_wglDeleteContext(next.context));
}

TEST_P(destroyed_window_test, another_window_changes_meanwhile) {
  library::start({.way = GetParam()});
  const library::rendering other = library::start_rendering({0, 0, 50, 50});
  const library::rendering rendered = library::start_rendering({860, 100, 1160, 300});
  EXPECT_TRUE(DestroyWindow(rendered.window.hwnd));
  driver::clear_calls();
  scene::place(other.window.hwnd, {10, 10, 70, 70});
  for (int part = 0; part < 2; ++part) {
    // Once for each message that a move with a new size brings.
    std::vector<driver::call> wanted;
    for (int message = 0; message < 3; ++message) {
      wanted.push_back(driver::expect<glViewportOffsetZ4_op>(part == 0 ? 0 : -100, 0));
      wanted.push_back(driver::expect<glDrawableSizeZ4_op>(300, 200));
    }
    EXPECT_EQ(library::part_calls(rendered, part), wanted);
    EXPECT_TRUE(library::part_calls(other, part).empty());
  }
}

// As a number that outlives the block.
std::uintptr_t bound_mapping() {
  return reinterpret_cast<std::uintptr_t>(own_state()->window_mapping);
}

void expect_cleared(const library::rendering& rendered, int part, u32 mask) {
  EXPECT_EQ(library::part_calls(rendered, part), std::vector{driver::expect<glClear_op>(mask)});
}

TEST_P(destroyed_window_test, its_thread_ends_with_it_bound) {
  library::start({.way = GetParam()});
  const library::app_thread_pointer thread = library::start_thread();
  allocation::watch();
  library::rendering rendered;
  std::uintptr_t mapping = 0;
  library::run(thread, [&] {
    rendered = library::start_rendering();
    mapping = bound_mapping();
    driver::clear_calls();
    EXPECT_TRUE(DestroyWindow(rendered.window.hwnd));
    osw_glClear(5);
    osw_wglSwapBuffers(rendered.window.hdc);
    EXPECT_TRUE(allocation::is_live(mapping));
  });
  library::end_thread(thread);
  EXPECT_TRUE(platform::wait_for_live_threads(0));
  allocation::stop_watching();
  // The end of the thread hands over what it has drawn.
  for (int part = 0; part < 2; ++part) expect_cleared(rendered, part, 5);
  EXPECT_EQ(std::ranges::count(allocation::freed(), mapping), 1);
  EXPECT_EQ(library::listed_states(), 0);
}

// The window's own thread destroys it while another one draws to it.
TEST_P(destroyed_window_test, while_another_thread_draws) {
  library::start({.way = GetParam()});
  const library::app_window window = library::open_window();
  const library::app_thread_pointer thread = library::start_thread();
  library::run(thread, [&] { library::start_rendering_in(window); });
  std::atomic<bool> gone{false};
  std::atomic<int> frames{0};
  library::post(thread, [&] {
    for (int after = 0; after < 3;) {
      after += gone.load();
      osw_glClear(5);
      osw_wglSwapBuffers(window.hdc);
      osw_glFinish();
      library::finish();
      frames.fetch_add(1);
      platform::pump();
    }
  });
  while (frames.load() < 3) platform::pump();
  EXPECT_TRUE(DestroyWindow(window.hwnd));
  gone.store(true);
  library::wait(thread);
  library::run(thread, [] { EXPECT_TRUE(osw_wglMakeCurrent(nullptr, nullptr)); });
  library::end_thread(thread);
}

TEST_P(destroyed_window_test, two_threads_have_it_bound) {
  library::start({.way = GetParam()});
  allocation::watch();
  const library::rendering mine = library::start_rendering();
  const std::uintptr_t mapping = bound_mapping();
  const library::app_thread_pointer thread = library::start_thread();
  library::rendering its;
  library::run(thread, [&] {
    its = library::start_rendering_in(mine.window);
    EXPECT_EQ(bound_mapping(), mapping);
  });
  EXPECT_TRUE(DestroyWindow(mine.window.hwnd));
  driver::clear_calls();
  osw_glClear(5);
  library::finish();
  library::run(thread, [] {
    osw_glClear(6);
    library::finish();
    EXPECT_TRUE(osw_wglMakeCurrent(nullptr, nullptr));
  });
  for (int part = 0; part < 2; ++part) {
    expect_cleared(mine, part, 5);
    expect_cleared(its, part, 6);
  }
  driver::clear_calls();
  osw_glClear(7);
  library::finish();
  for (int part = 0; part < 2; ++part) expect_cleared(mine, part, 7);
  EXPECT_TRUE(allocation::is_live(mapping)) << "one of them still has it bound";
  EXPECT_TRUE(osw_wglMakeCurrent(nullptr, nullptr));
  EXPECT_EQ(std::ranges::count(allocation::freed(), mapping), 1);
  allocation::stop_watching();
  library::end_thread(thread);
}

INSTANTIATE_TEST_SUITE_P(, destroyed_window_test, testing::Values(library::path::threaded, library::path::sequential));

}  // namespace
