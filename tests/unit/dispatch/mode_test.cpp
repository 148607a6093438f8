// A thread's mode, and what each make-current makes of it.
#include <gtest/gtest.h>

#include <cstring>

#include "dispatch/thread_state.h"
#include "support/library.h"
#include "wgl/records/glrc.h"

namespace {

struct mode_test : library::process_test {};

__osw_thread_state* own_state() {
  return static_cast<__osw_thread_state*>(TlsGetValue(__osw_state_slot));
}

void expect_mode(i32 mode, const __osw_proc* table, bool has_context) {
  ASSERT_NE(own_state(), nullptr);
  EXPECT_EQ(own_state()->mode, mode);
  EXPECT_EQ(own_state()->gl_table, table);
  EXPECT_EQ(own_state()->has_context, has_context);
  EXPECT_EQ(own_state()->seq_path, mode == 1);
  EXPECT_EQ(own_state()->seq_override, nullptr);
  EXPECT_EQ(own_state()->pass_override, nullptr);
}

void expect_no_context() {
  expect_mode(0, __osw_gl_table_nocontext, false);
  EXPECT_EQ(own_state()->thread_ctrl, nullptr);
  EXPECT_EQ(own_state()->window_mapping, nullptr);
  EXPECT_EQ(own_state()->pbuffer, nullptr);
  EXPECT_EQ(own_state()->glrc, nullptr);
}

TEST_F(mode_test, the_option_makes_it_threaded) {
  library::start({.way = library::path::threaded});
  library::start_rendering();
  expect_mode(2, __osw_gl_table_mt, true);
}

TEST_F(mode_test, the_fast_switch_makes_it_sequential) {
  library::start({.way = library::path::sequential});
  library::start_rendering();
  expect_mode(1, __osw_gl_table_seq, true);
}

TEST_F(mode_test, without_the_fast_switch_it_is_threaded) {
  library::start({.way = library::path::sequential, .fast_switch = false});
  library::start_rendering();
  EXPECT_EQ(__osw_sys_wgl[wglFastSwitchContextZ4_op::op], nullptr);
  expect_mode(2, __osw_gl_table_mt, true);
}

TEST_F(mode_test, a_bypassed_process_passes_through) {
  library::start({.active = false});
  library::start_rendering();
  expect_mode(3, __osw_gl_table_pass, true);
}

struct both_ways_test : mode_test, testing::WithParamInterface<library::path> {};

TEST_P(both_ways_test, release_and_bind_again) {
  library::start({.way = GetParam()});
  const library::rendering rendered = library::start_rendering();
  const i32 mode = GetParam() == library::path::threaded ? 2 : 1;
  const __osw_proc* const table = mode == 2 ? __osw_gl_table_mt : __osw_gl_table_seq;
  expect_mode(mode, table, true);
  __osw_cmd_queue* const queue = own_state()->cmd_queue;
  EXPECT_NE(queue, nullptr);
  EXPECT_TRUE(osw_wglMakeCurrent(nullptr, nullptr));
  expect_no_context();
  EXPECT_EQ(own_state()->cmd_queue, queue);
  EXPECT_TRUE(osw_wglMakeCurrent(rendered.window.hdc, rendered.context));
  expect_mode(mode, table, true);
  EXPECT_EQ(own_state()->cmd_queue, queue);
}

INSTANTIATE_TEST_SUITE_P(, both_ways_test, testing::Values(library::path::threaded, library::path::sequential));

TEST_F(mode_test, a_failed_binding_keeps_the_mode) {
  library::start();
  const library::app_window window = library::open_window();
  const HGLRC context = osw_wglCreateContext(window.hdc);
  driver::fail_call<wglMakeCurrent_op>(1);
  EXPECT_FALSE(osw_wglMakeCurrent(window.hdc, context));
  expect_no_context();
  EXPECT_EQ(own_state()->current_hdc, window.hdc);
  EXPECT_EQ(own_state()->current_hglrc, context);
  EXPECT_EQ(own_state()->cmd_queue, nullptr);
  EXPECT_EQ(platform::live_threads(), 0);
  EXPECT_TRUE(osw_wglMakeCurrent(window.hdc, context));
  expect_mode(2, __osw_gl_table_mt, true);
  driver::fail_call<wglMakeCurrent_op>(1);
  EXPECT_FALSE(osw_wglMakeCurrent(nullptr, nullptr));
  expect_mode(2, __osw_gl_table_mt, true);
  EXPECT_NE(own_state()->glrc, nullptr);
  EXPECT_EQ(own_state()->current_hglrc, nullptr);
}

TEST_F(mode_test, repeating_the_binding_fails_and_touches_nothing) {
  library::start();
  const library::rendering rendered = library::start_rendering();
  const __osw_thread_state before = *own_state();
  driver::clear_calls();
  EXPECT_FALSE(osw_wglMakeCurrent(rendered.window.hdc, rendered.context));
  EXPECT_EQ(std::memcmp(&before, own_state(), sizeof before), 0);
  EXPECT_TRUE(driver::calls_of<wglMakeCurrent_op>().empty());
  EXPECT_TRUE(osw_wglMakeCurrent(nullptr, nullptr));
  EXPECT_FALSE(osw_wglMakeCurrent(nullptr, nullptr));
}

TEST_F(mode_test, threads_have_modes_of_their_own) {
  library::start({.way = library::path::sequential});
  const library::app_thread_pointer first = library::start_thread();
  const library::app_thread_pointer second = library::start_thread();
  library::run(first, [] { library::start_rendering(); });
  library::run(second, [] {
    EXPECT_EQ(osw_glGetError(), 0u);
    expect_no_context();
  });
  driver::clear_calls();
  library::run(second, [] { osw_glClear(1); });
  EXPECT_TRUE(driver::calls_of<glClear_op>().empty());
  library::run(first, [] {
    expect_mode(1, __osw_gl_table_seq, true);
    osw_glClear(1);
  });
  EXPECT_EQ(driver::calls_of<glClear_op>().size(), 2u);
  library::end_thread(first);
  library::end_thread(second);
}

TEST_F(mode_test, a_failed_pass_through_binding_keeps_the_mode) {
  library::start({.active = false});
  const library::rendering rendered = library::start_rendering();
  driver::fail_call<wglMakeCurrent_op>(1);
  EXPECT_FALSE(osw_wglMakeCurrent(nullptr, nullptr));
  expect_mode(3, __osw_gl_table_pass, true);
  EXPECT_TRUE(osw_wglMakeCurrent(nullptr, nullptr));
  expect_mode(0, __osw_gl_table_nocontext, false);
  driver::fail_call<wglMakeCurrent_op>(1);
  EXPECT_FALSE(osw_wglMakeCurrent(rendered.window.hdc, rendered.context));
  expect_mode(0, __osw_gl_table_nocontext, false);
}

TEST_F(mode_test, pass_through_keeps_no_books) {
  library::start({.active = false});
  library::start_rendering();
  EXPECT_EQ(own_state()->current_hdc, nullptr);
  EXPECT_EQ(own_state()->current_hglrc, nullptr);
  EXPECT_EQ(own_state()->glrc, nullptr);
  EXPECT_EQ(own_state()->window_mapping, nullptr);
  EXPECT_EQ(own_state()->cmd_queue, nullptr);
  EXPECT_EQ(platform::live_threads(), 0);
  EXPECT_EQ(driver::contexts().size(), 1u);
  EXPECT_EQ(platform::windows().size(), 1u);
}

TEST_F(mode_test, a_bypassed_repeat_goes_to_the_system) {
  library::start({.active = false});
  const library::rendering rendered = library::start_rendering();
  EXPECT_TRUE(osw_wglMakeCurrent(rendered.window.hdc, rendered.context));
  EXPECT_EQ(driver::calls_of<wglMakeCurrent_op>().size(), 2u);
}

}  // namespace
