// Presenting a frame: which windows are swapped, by whom, and when.
#include <gtest/gtest.h>

#include "pipeline/cmd_queue.h"
#include "startup/config/monitors.h"
#include "support/wgl_scene.h"

namespace {

using scene::driver_context;
using scene::in;
using scene::own_state;
using scene::own_steps;
using scene::worker_steps;
using steps = std::vector<scene::step>;

struct wgl_swap_test : library::process_test {};

HDC child_hdc(const library::rendering& rendered, int part) {
  return scene::mapping_of(rendered.window.hwnd).parts[part].child_hdc;
}

steps wgl_only(steps all) {
  std::erase_if(all, [](const scene::step& step) { return step.call.space != driver::op_space::wgl; });
  return all;
}

// The record that the last append has filled.
const __osw_cmd& last_record() {
  return *(__osw_next_cmd(own_state()->cmd_queue) - 1);
}

TEST_F(wgl_swap_test, a_swap_travels_with_the_frame) {
  library::start({.parts = 4, .query_on_app_thread = false});
  const library::rendering rendered = library::start_rendering();
  driver::clear_calls();
  osw_glClear(5);
  EXPECT_TRUE(osw_wglSwapBuffers(rendered.window.hdc));
  EXPECT_EQ(*own_state()->cmd_queue->fill_count, 2u);
  EXPECT_EQ(last_record().type, static_cast<u32>(__osw_cmd_wgl));
  EXPECT_EQ(last_record().op, wglSwapBuffers_op::op);
  EXPECT_EQ(last_record().arg_count, 1u);
  EXPECT_EQ(last_record().args[0], driver::bits_of(rendered.window.hdc));
  // Nothing brings it to the screen before the list goes.
  EXPECT_TRUE(driver::calls().empty());
  EXPECT_EQ(own_state()->frame_count, 1);
  library::finish();
  for (int part = 0; part < 4; ++part) {
    const HGLRC child = rendered.children[static_cast<std::size_t>(part)];
    EXPECT_EQ(worker_steps(part),
              (steps{in<glClear_op>(child, 5u), in<wglSwapBuffers_op>(child, child_hdc(rendered, part))}));
  }
  // The application's own window is swapped by nobody.
  EXPECT_TRUE(own_steps().empty());
}

TEST_F(wgl_swap_test, layers_are_swapped_as_the_main_plane) {
  library::start();
  const library::rendering rendered = library::start_rendering();
  driver::clear_calls();
  for (const UINT planes : {0u, 1u, 0x8000u, 0xFFFFFFFFu}) {
    EXPECT_TRUE(osw_wglSwapLayerBuffers(rendered.window.hdc, planes));
    EXPECT_EQ(last_record().op, wglSwapBuffers_op::op);
    EXPECT_EQ(last_record().arg_count, 2u);
    EXPECT_EQ(last_record().args[1], planes);
  }
  EXPECT_EQ(own_state()->frame_count, 4);
  library::finish();
  for (int part = 0; part < 2; ++part) {
    const HGLRC child = rendered.children[static_cast<std::size_t>(part)];
    EXPECT_EQ(wgl_only(worker_steps(part)), steps(4, in<wglSwapBuffers_op>(child, child_hdc(rendered, part))));
  }
  EXPECT_TRUE(wgl_only(own_steps()).empty());
}

TEST_F(wgl_swap_test, nobody_sees_what_a_workers_swap_says) {
  library::start();
  const library::rendering rendered = library::start_rendering();
  driver::set_result<wglSwapBuffers_op>(0);
  EXPECT_TRUE(osw_wglSwapBuffers(rendered.window.hdc));
  library::finish();
  EXPECT_EQ(driver::calls_of<wglSwapBuffers_op>().size(), 2u);
}

// The device context of the call says which window is presented, not the one that is bound.
TEST_F(wgl_swap_test, another_window_than_the_bound_one) {
  library::start();
  const library::rendering first = library::start_rendering();
  const library::rendering second = library::start_rendering({0, 0, 50, 50});
  driver::clear_calls();
  EXPECT_TRUE(osw_wglSwapBuffers(first.window.hdc));
  library::finish();
  for (int part = 0; part < 2; ++part) {
    const HGLRC child = second.children[static_cast<std::size_t>(part)];
    EXPECT_EQ(wgl_only(worker_steps(part)), (steps{in<wglSwapBuffers_op>(child, child_hdc(first, part))}));
  }
  EXPECT_TRUE(library::reports().empty());
}

TEST_F(wgl_swap_test, another_device_context_of_the_window) {
  library::start();
  const library::rendering rendered = library::start_rendering();
  const HDC other = GetWindowDC(rendered.window.hwnd);
  driver::clear_calls();
  platform::clear_debug_output();
  EXPECT_TRUE(osw_wglSwapBuffers(other));
  library::finish();
  EXPECT_EQ(driver::calls_of<wglSwapBuffers_op>().size(), 2u);
  const std::vector<std::string> reports = library::reports();
  ASSERT_EQ(reports.size(), 2u);
  for (const std::string& report : reports) {
    EXPECT_TRUE(report.starts_with("OGLSPANWrapper Warning: for hwnd = 0x")) << report;
    EXPECT_NE(report.find("used in wglSwapBuffers is not the same as the hdc (0x"), std::string::npos) << report;
  }
  ReleaseDC(rendered.window.hwnd, other);
}

TEST_F(wgl_swap_test, a_device_context_without_a_window) {
  library::start();
  library::start_rendering();
  const HDC hdc = platform::create_windowless_dc();
  driver::clear_calls();
  platform::clear_debug_output();
  EXPECT_TRUE(osw_wglSwapBuffers(hdc));
  library::finish();
  EXPECT_TRUE(driver::calls_of<wglSwapBuffers_op>().empty());
  const std::vector<std::string> reports = library::reports();
  ASSERT_EQ(reports.size(), 2u);
  for (const std::string& report : reports) {
    EXPECT_NE(report.find("parameter in wglSwapBuffers is not a valid window hdc.\n"), std::string::npos) << report;
  }
  platform::destroy_windowless_dc(hdc);
}

TEST_F(wgl_swap_test, without_a_context_a_swap_still_goes_to_the_workers) {
  library::start();
  const library::rendering rendered = library::start_rendering();
  EXPECT_TRUE(osw_wglMakeCurrent(nullptr, nullptr));
  driver::clear_calls();
  EXPECT_TRUE(osw_wglSwapBuffers(rendered.window.hdc));
  EXPECT_EQ(own_state()->frame_count, 0);
  EXPECT_EQ(last_record().op, wglSwapBuffers_op::op);
  // The next binding takes it along.
  EXPECT_TRUE(osw_wglMakeCurrent(rendered.window.hdc, rendered.context));
  for (int part = 0; part < 2; ++part) {
    EXPECT_EQ(worker_steps(part).at(0), in<wglSwapBuffers_op>(nullptr, child_hdc(rendered, part)));
  }
}

TEST_F(wgl_swap_test, a_thread_without_a_queue_swaps_by_the_system) {
  library::start();
  const library::app_window window = library::open_window();
  EXPECT_TRUE(osw_wglSwapBuffers(window.hdc));
  EXPECT_TRUE(osw_wglSwapLayerBuffers(window.hdc, 6));
  driver::fail_call<wglSwapBuffers_op>(1);
  EXPECT_FALSE(osw_wglSwapBuffers(window.hdc));
  driver::fail_call<wglSwapLayerBuffers_op>(1);
  EXPECT_FALSE(osw_wglSwapLayerBuffers(window.hdc, 6));
  const std::vector<driver::call> swaps = driver::calls_of<wglSwapBuffers_op>();
  EXPECT_EQ(swaps, std::vector(2, driver::expect<wglSwapBuffers_op>(window.hdc)));
  EXPECT_EQ(driver::calls_of<wglSwapLayerBuffers_op>(),
            std::vector(2, driver::expect<wglSwapLayerBuffers_op>(window.hdc, 6u)));
  EXPECT_EQ(own_state()->frame_count, 0);
  EXPECT_EQ(own_state()->cmd_queue, nullptr);
}

// gdi32's SwapBuffers ends in the library.
TEST_F(wgl_swap_test, the_swap_of_gdi) {
  library::start();
  const library::rendering rendered = library::start_rendering();
  driver::clear_calls();
  EXPECT_TRUE(SwapBuffers(rendered.window.hdc));
  library::finish();
  EXPECT_EQ(driver::calls_of<wglSwapBuffers_op>().size(), 2u);
  EXPECT_EQ(own_state()->frame_count, 1);
}

struct several_test : wgl_swap_test, testing::WithParamInterface<library::path> {};

TEST_P(several_test, concern_the_application_alone) {
  library::start({.way = GetParam()});
  const library::rendering rendered = library::start_rendering();
  driver::clear_calls();
  driver::set_result<wglSwapMultipleBuffers_op>(0x12345);
  const WGLSWAP* list = reinterpret_cast<const WGLSWAP*>(0x1234560);
  EXPECT_EQ(osw_wglSwapMultipleBuffers(3, list), 0x12345u);
  EXPECT_EQ(own_steps(), (steps{in<wglSwapMultipleBuffers_op>(rendered.context, 3u, list)}));
  EXPECT_EQ(driver::calls().size(), 1u);
  EXPECT_EQ(*own_state()->cmd_queue->fill_count, 0u);
  EXPECT_EQ(own_state()->frame_count, 0);
}

INSTANTIATE_TEST_SUITE_P(, several_test, testing::Values(library::path::threaded, library::path::sequential));

// ---- the sequential path ----

TEST_F(wgl_swap_test, sequential_swaps_each_child_at_once) {
  library::start({.way = library::path::sequential});
  const library::rendering rendered = library::start_rendering();
  const HGLRC app = rendered.context;
  const HGLRC first = rendered.children[0];
  const HGLRC second = rendered.children[1];
  const auto to = [](HGLRC from, HGLRC target) {
    return in<wglFastSwitchContextZ4_op>(from, driver_context(target), 0);
  };
  driver::clear_calls();
  // The device context of the call is not looked at.
  EXPECT_TRUE(osw_wglSwapBuffers(nullptr));
  EXPECT_EQ(own_steps(), (steps{to(app, first), in<wglSwapBuffers_op>(first, child_hdc(rendered, 0)), to(first, second),
                                in<wglSwapBuffers_op>(second, child_hdc(rendered, 1)), to(second, app)}));
  driver::clear_calls();
  EXPECT_TRUE(osw_wglSwapLayerBuffers(rendered.window.hdc, 9));
  EXPECT_EQ(own_steps(),
            (steps{to(app, first), in<wglSwapLayerBuffers_op>(first, child_hdc(rendered, 0), 9u), to(first, second),
                   in<wglSwapLayerBuffers_op>(second, child_hdc(rendered, 1), 9u), to(second, app)}));
  EXPECT_EQ(own_state()->frame_count, 2);
  for (int part = 0; part < 2; ++part) EXPECT_TRUE(worker_steps(part).empty());
  EXPECT_EQ(*own_state()->cmd_queue->fill_count, 0u);
}

TEST_F(wgl_swap_test, sequential_goes_on_after_a_failed_swap) {
  library::start({.parts = 4, .way = library::path::sequential});
  const library::rendering rendered = library::start_rendering();
  for (int failing = 1; failing <= 4; ++failing) {
    driver::clear_calls();
    driver::fail_call<wglSwapBuffers_op>(failing);
    EXPECT_FALSE(osw_wglSwapBuffers(rendered.window.hdc));
    EXPECT_EQ(driver::calls_of<wglSwapBuffers_op>().size(), 4u);
    EXPECT_EQ(driver::current_binding().switched_to, rendered.context);
  }
  // Of each result the low bit counts.
  driver::set_result<wglSwapBuffers_op>(2);
  EXPECT_FALSE(osw_wglSwapBuffers(rendered.window.hdc));
  driver::set_result<wglSwapBuffers_op>(3);
  EXPECT_EQ(osw_wglSwapBuffers(rendered.window.hdc), 1);
  EXPECT_EQ(own_state()->frame_count, 6);
}

TEST_F(wgl_swap_test, sequential_without_parts_there_is_the_switch_back_alone) {
  library::start({.way = library::path::sequential});
  const library::rendering rendered = library::start_rendering();
  const HGLRC app = rendered.context;
  const i32 count = __osw_part_count;
  __osw_part_count = 0;
  driver::clear_calls();
  EXPECT_EQ(osw_wglSwapBuffers(rendered.window.hdc), 1);
  EXPECT_EQ(osw_wglSwapLayerBuffers(rendered.window.hdc, 9), 1);
  EXPECT_EQ(own_steps(), steps(2, in<wglFastSwitchContextZ4_op>(app, driver_context(app), 0)));
  EXPECT_EQ(driver::calls().size(), 2u);
  EXPECT_EQ(own_state()->frame_count, 2);
  __osw_part_count = count;
}

TEST_F(wgl_swap_test, sequential_without_a_context_the_workers_swap) {
  library::start({.way = library::path::sequential});
  const library::rendering rendered = library::start_rendering();
  EXPECT_TRUE(osw_wglMakeCurrent(nullptr, nullptr));
  driver::clear_calls();
  EXPECT_TRUE(osw_wglSwapBuffers(rendered.window.hdc));
  EXPECT_TRUE(driver::calls_of<wglSwapBuffers_op>().empty());
  EXPECT_EQ(last_record().op, wglSwapBuffers_op::op);
  EXPECT_TRUE(osw_wglMakeCurrent(rendered.window.hdc, rendered.context));
  EXPECT_EQ(driver::calls_of<wglSwapBuffers_op>().size(), 2u);
}

}  // namespace
