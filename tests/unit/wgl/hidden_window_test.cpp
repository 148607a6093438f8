// The hidden windows that give child contexts and child pbuffers their pixel format.
#include <gtest/gtest.h>

#include "startup/config/monitors.h"
#include "support/wgl_scene.h"
#include "wgl/child_windows.h"
#include "wgl/records/glrc.h"
#include "wgl/records/pbuffer.h"

namespace {

using scene::edges;
using scene::edges_of;

struct wgl_hidden_window_test : library::process_test {};

constexpr char glrc_class[] = "__osw_glrc_window";
constexpr DWORD hidden_style = 0x88000000;

const std::vector<RECT> three_monitors = {{-1280, -200, 0, 824}, {0, 0, 1920, 1080}, {1920, 300, 2720, 900}};

// What stands when the window gets its format.
struct sight {
  platform::window_facts window;
  int window_dcs;  // taken so far
  int format;
};

void watch(std::vector<sight>& seen) {
  driver::on_call<wglSetPixelFormat_op>([&seen](driver::live_call& live) {
    const auto hdc = reinterpret_cast<HDC>(live.what.arguments[0]);
    seen.push_back({platform::window(WindowFromDC(hdc)), platform::call_count("GetWindowDC"),
                    static_cast<int>(live.what.arguments[1])});
  });
}

TEST_F(wgl_hidden_window_test, one_pixel_at_the_corner_of_its_own_monitor) {
  scene::start_over(three_monitors);
  const library::app_window window = library::open_window({10, 10, 60, 60}, 5);
  std::vector<sight> seen;
  watch(seen);
  driver::clear_calls();
  ASSERT_NE(osw_wglCreateContext(window.hdc), nullptr);
  ASSERT_EQ(seen.size(), 3u);
  for (std::size_t part = 0; part < 3; ++part) {
    const RECT& monitor = three_monitors[part];
    const platform::window_facts& hidden = seen[part].window;
    EXPECT_EQ(hidden.class_name, glrc_class);
    EXPECT_EQ(hidden.title, glrc_class);
    EXPECT_EQ(hidden.style, hidden_style);
    EXPECT_EQ(hidden.extended_style, 0u);
    EXPECT_EQ(hidden.parent, nullptr);
    EXPECT_EQ(hidden.id, 0);
    EXPECT_EQ(edges_of(hidden.rect), (edges{monitor.left, monitor.top, monitor.left + 1, monitor.top + 1}));
    EXPECT_EQ(seen[part].window_dcs, static_cast<int>(part) + 1);
    EXPECT_EQ(seen[part].format, 5);
  }
}

TEST_F(wgl_hidden_window_test, the_steps_of_each_part_in_order) {
  library::start();
  const library::app_window window = library::open_window();
  std::vector<HDC> hidden;
  driver::on_call<wglSetPixelFormat_op>(
      [&](driver::live_call& live) { hidden.push_back(reinterpret_cast<HDC>(live.what.arguments[0])); });
  driver::clear_calls();
  const HGLRC context = osw_wglCreateContext(window.hdc);
  ASSERT_NE(context, nullptr);
  ASSERT_EQ(hidden.size(), 2u);
  std::vector<driver::call> calls = driver::calls();
  for (driver::call& call : calls) {
    // Only the index of the format counts; nothing is promised of the descriptor.
    if (call.op == wglSetPixelFormat_op::op) call.arguments[2] = 0;
  }
  EXPECT_EQ(
      calls,
      (std::vector{
          driver::expect<wglCreateLayerContext_op>(window.hdc, 0), driver::expect<wglGetPixelFormat_op>(window.hdc),
          driver::expect<wglSetPixelFormat_op>(hidden[0], 1, nullptr), driver::expect<wglCreateContext_op>(hidden[0]),
          driver::expect<wglGetPixelFormat_op>(window.hdc), driver::expect<wglSetPixelFormat_op>(hidden[1], 1, nullptr),
          driver::expect<wglCreateContext_op>(hidden[1])}));
}

TEST_F(wgl_hidden_window_test, a_format_that_is_given_is_not_asked_for) {
  scene::start_over(three_monitors);
  const library::app_window window = library::open_window({10, 10, 60, 60}, 5);
  osw_wglGetCurrentContext();
  std::vector<sight> seen;
  watch(seen);
  driver::clear_calls();
  const HDC hdc = __osw_create_hidden_dc(scene::own_state(), window.hdc, 2, 7, 33, 21);
  ASSERT_NE(hdc, nullptr);
  ASSERT_EQ(seen.size(), 1u);
  EXPECT_EQ(seen[0].format, 7);
  EXPECT_EQ(edges_of(seen[0].window.rect), (edges{1920, 300, 1953, 321}));
  EXPECT_TRUE(driver::calls_of<wglGetPixelFormat_op>().empty());
  EXPECT_EQ(platform::open_device_contexts(), 1);
  __osw_destroy_hidden_dc(hdc);
  EXPECT_EQ(platform::open_device_contexts(), 0);
  EXPECT_TRUE(platform::windows_of_class(glrc_class).empty());
  __osw_destroy_hidden_dc(nullptr);
}

TEST_F(wgl_hidden_window_test, the_class_is_registered_at_each_use) {
  library::start();
  const library::app_window window = library::open_window();
  ASSERT_NE(osw_wglCreateContext(window.hdc), nullptr);
  ASSERT_NE(osw_wglCreateContext(window.hdc), nullptr);
  EXPECT_EQ(platform::call_count("RegisterClassA"), 4);
  const std::vector<platform::class_facts> classes = platform::window_classes();
  ASSERT_EQ(classes.size(), 1u);
  EXPECT_EQ(classes[0].name, glrc_class);
  EXPECT_EQ(classes[0].style, 0x23u);
  EXPECT_EQ(classes[0].instance, library::module_handle);
  ASSERT_NE(classes[0].procedure, nullptr);
}

TEST_F(wgl_hidden_window_test, threads_that_register_the_classes_at_once_find_them) {
  library::start();
  platform::register_classes_slowly();
  library::run_on_new_threads(3, [] {
    const library::app_window window = library::open_window();
    const HGLRC context = osw_wglCreateContext(window.hdc);
    EXPECT_NE(context, nullptr);
    EXPECT_TRUE(osw_wglMakeCurrent(window.hdc, context));
    EXPECT_EQ(platform::children_of(window.hwnd).size(), static_cast<std::size_t>(__osw_part_count));
  });
}

TEST_F(wgl_hidden_window_test, without_a_window_both_failures_are_shown) {
  expects_message_boxes = true;
  library::start();
  const library::app_window window = library::open_window();
  platform::fail_call("CreateWindowExA", 2);
  EXPECT_EQ(osw_wglCreateContext(window.hdc), nullptr);
  EXPECT_EQ(scene::boxes(), (std::vector<scene::box>{{nullptr, "Creating glrc window failed!"},
                                                     {nullptr, "Creating child glrc failed!"}}));
  EXPECT_EQ(driver::calls_of<wglCreateContext_op>().back(), driver::expect<wglCreateContext_op>(nullptr));
  EXPECT_EQ(__osw_glrc_registry[0].app_hglrc, nullptr);
  // The application's context and the first child stay.
  EXPECT_EQ(driver::contexts().size(), 2u);
  EXPECT_TRUE(driver::calls_of<wglDeleteContext_op>().empty());
}

TEST_F(wgl_hidden_window_test, a_class_that_cannot_be_registered_shows_as_a_missing_window) {
  expects_message_boxes = true;
  library::start();
  const library::app_window window = library::open_window();
  platform::fail_call("RegisterClassA", 1, ERROR_NOT_ENOUGH_MEMORY);
  EXPECT_EQ(osw_wglCreateContext(window.hdc), nullptr);
  EXPECT_EQ(scene::boxes(), (std::vector<scene::box>{{nullptr, "Creating glrc window failed!"},
                                                     {nullptr, "Creating child glrc failed!"}}));
}

TEST_F(wgl_hidden_window_test, a_refused_format_leaves_the_window_standing) {
  expects_message_boxes = true;
  library::start();
  const library::app_window window = library::open_window();
  driver::fail_call<wglSetPixelFormat_op>(2);
  EXPECT_EQ(osw_wglCreateContext(window.hdc), nullptr);
  const std::vector<platform::window_facts> hidden = platform::windows_of_class(glrc_class);
  ASSERT_EQ(hidden.size(), 1u);
  EXPECT_EQ(scene::boxes(), (std::vector<scene::box>{{hidden[0].hwnd, "SetPixelFormat for glrc window failed!"},
                                                     {nullptr, "Creating child glrc failed!"}}));
  EXPECT_EQ(driver::calls_of<wglCreateContext_op>().back(), driver::expect<wglCreateContext_op>(nullptr));
  EXPECT_EQ(__osw_glrc_registry[0].app_hglrc, nullptr);
}

// gdi32's calls come back through the library's own exports, also while one of its handlers runs.
TEST_F(wgl_hidden_window_test, calls_of_the_driver_through_gdi_come_back_in) {
  library::start();
  const library::app_window window = library::open_window();
  int answered = 0;
  driver::on_call<wglCreateContext_op>([&](driver::live_call& live) {
    const auto hdc = reinterpret_cast<HDC>(live.what.arguments[0]);
    PIXELFORMATDESCRIPTOR descriptor;
    EXPECT_EQ(GetPixelFormat(hdc), 1);
    EXPECT_GT(DescribePixelFormat(hdc, 1, sizeof descriptor, &descriptor), 0);
    EXPECT_TRUE(SetPixelFormat(hdc, 1, &descriptor));
    ++answered;
  });
  ASSERT_NE(osw_wglCreateContext(window.hdc), nullptr);
  EXPECT_EQ(answered, 2);
}

}  // namespace
