// The child windows of an application's window: how they are made, by both layout methods, and what a failure leaves.
#include <gtest/gtest.h>

#include <cstring>

#include "startup/config/monitors.h"
#include "support/wgl_scene.h"
#include "wgl/records/glrc.h"

namespace {

using scene::edges;
using scene::edges_of;

struct wgl_child_window_test : library::process_test {};

constexpr DWORD child_style = 0x5E000000;

struct application {
  library::app_window window;
  HGLRC context = nullptr;
};

// A window and a context that has not been current.
application prepare_application(RECT rect = library::usual_rect, int format = 1) {
  application prepared;
  prepared.window = library::open_window(rect, format);
  prepared.context = osw_wglCreateContext(prepared.window.hdc);
  EXPECT_NE(prepared.context, nullptr);
  return prepared;
}

BOOL bind(const application& bound) {
  return osw_wglMakeCurrent(bound.window.hdc, bound.context);
}

// ---- what an observer in the application's window sees of a child's making ----

struct sight {
  HWND child;
  UINT message;
  edges rect;  // in the parent's client area
  int taken_dcs;
  int set_formats;
  bool operator==(const sight&) const = default;
};
std::vector<sight> sights;

LRESULT watched_child(HWND hwnd, UINT message, WPARAM wparam, LPARAM lparam) {
  if (message == WM_WINDOWPOSCHANGING) {
    const auto* position = reinterpret_cast<const WINDOWPOS*>(lparam);
    sights.push_back({hwnd,
                      message,
                      {position->x, position->y, position->x + position->cx, position->y + position->cy},
                      platform::call_count("GetDC"),
                      platform::call_count("SetPixelFormat")});
  }
  return DefWindowProcA(hwnd, message, wparam, lparam);
}

// Notes each child at its creation and watches it from then on.
LRESULT watching_parent(HWND hwnd, UINT message, WPARAM wparam, LPARAM lparam) {
  if (message == WM_PARENTNOTIFY && (wparam & 0xFFFF) == WM_CREATE) {
    const auto child = reinterpret_cast<HWND>(lparam);
    const platform::window_facts facts = platform::window(child);
    const RECT parent = platform::window(hwnd).client;
    sights.push_back({child,
                      WM_CREATE,
                      {facts.rect.left - parent.left, facts.rect.top - parent.top, facts.rect.right - parent.left,
                       facts.rect.bottom - parent.top},
                      platform::call_count("GetDC"),
                      platform::call_count("SetPixelFormat")});
    SetWindowLongPtrA(child, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(watched_child));
  }
  return DefWindowProcA(hwnd, message, wparam, lparam);
}

application prepare_watching_application(const RECT& rect) {
  const application prepared = prepare_application(rect);
  SetWindowLongPtrA(prepared.window.hwnd, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(watching_parent));
  return prepared;
}

struct child_part_test : wgl_child_window_test, testing::WithParamInterface<int> {};

TEST_P(child_part_test, one_child_per_part_with_the_format_of_the_window) {
  const int parts = GetParam();
  library::start({.parts = parts});
  const application bound = prepare_application({0, 0, 300, 200}, 3);
  driver::clear_calls();
  PIXELFORMATDESCRIPTOR wanted;
  platform::describe_pixel_format(3, &wanted);
  driver::on_call<wglSetPixelFormat_op>([&](driver::live_call& live) {
    EXPECT_EQ(std::memcmp(reinterpret_cast<const void*>(live.what.arguments[2]), &wanted, sizeof wanted), 0);
  });
  EXPECT_TRUE(bind(bound));
  const std::vector<platform::window_facts> children = platform::children_of(bound.window.hwnd);
  ASSERT_EQ(children.size(), static_cast<std::size_t>(parts));
  const __osw_window_mapping& mapping = scene::mapping_of(bound.window.hwnd);
  EXPECT_EQ(mapping.app_hdc, bound.window.hdc);
  EXPECT_EQ(mapping.app_hwnd, bound.window.hwnd);
  EXPECT_EQ(mapping.pixel_format, 3);
  EXPECT_EQ(std::memcmp(&mapping.pfd, &wanted, sizeof wanted), 0);
  EXPECT_EQ(edges_of(mapping.client_rect), (edges{0, 0, 300, 200}));
  EXPECT_EQ(edges_of(mapping.window_rect), (edges{0, 0, 300, 200}));
  for (std::size_t part = 0; part < children.size(); ++part) {
    const platform::window_facts& child = children[part];
    EXPECT_EQ(child.class_name, "__osw_child_window");
    EXPECT_EQ(child.title, "");
    EXPECT_EQ(child.style, child_style);
    EXPECT_EQ(child.extended_style, 0u);
    EXPECT_EQ(child.id, static_cast<LONG_PTR>(part) + 100);
    EXPECT_EQ(child.parent, bound.window.hwnd);
    EXPECT_EQ(child.pixel_format, 3);
    EXPECT_EQ(child.thread_id, GetCurrentThreadId());
    EXPECT_EQ(mapping.parts[part].child_hwnd, child.hwnd);
    EXPECT_EQ(mapping.parts[part].child_hdc, GetDC(child.hwnd));
    EXPECT_EQ(mapping.parts[part].part_index, part);
  }
  const std::vector<driver::call> formats = driver::calls_of<wglSetPixelFormat_op>();
  ASSERT_EQ(formats.size(), children.size());
  for (std::size_t part = 0; part < children.size(); ++part) {
    EXPECT_EQ(formats[part].arguments[0], driver::bits_of(mapping.parts[part].child_hdc));
    EXPECT_EQ(formats[part].arguments[1], 3u);
  }
  const std::vector<driver::call> described = driver::calls_of<wglDescribePixelFormat_op>();
  ASSERT_EQ(described.size(), 1u);
  EXPECT_EQ(described[0].arguments[0], driver::bits_of(bound.window.hdc));
  EXPECT_EQ(described[0].arguments[1], 3u);
  EXPECT_EQ(described[0].arguments[2], 40u);
  EXPECT_EQ(driver::calls_of<wglGetPixelFormat_op>(),
            std::vector{driver::expect<wglGetPixelFormat_op>(bound.window.hdc)});
}

INSTANTIATE_TEST_SUITE_P(, child_part_test, testing::Values(1, 2, 4, 16));

TEST_F(wgl_child_window_test, the_class_of_the_children) {
  library::start();
  library::start_rendering();
  const std::vector<platform::class_facts> classes = platform::window_classes();
  ASSERT_EQ(classes.size(), 2u);
  EXPECT_EQ(classes[1].name, "__osw_child_window");
  EXPECT_EQ(classes[1].style, 0x23u);
  EXPECT_EQ(classes[1].instance, library::module_handle);
  // A second window finds the class there, which is as good.
  library::start_rendering({0, 0, 50, 50});
  EXPECT_EQ(platform::window_classes().size(), 2u);
}

TEST_F(wgl_child_window_test, intersecting_children_are_made_in_place) {
  library::start({.parts = 2});
  const application bound = prepare_watching_application({860, 100, 1100, 300});
  EXPECT_TRUE(bind(bound));
  const std::vector<platform::window_facts> children = scene::child_windows(bound.window.hwnd);
  ASSERT_EQ(children.size(), 2u);
  const int dcs = sights.at(0).taken_dcs;
  const int formats = sights.at(0).set_formats;
  EXPECT_EQ(sights, (std::vector<sight>{{children[0].hwnd, WM_CREATE, {0, 0, 100, 200}, dcs, formats},
                                        {children[1].hwnd, WM_CREATE, {100, 0, 240, 200}, dcs + 1, formats + 1}}));
  EXPECT_TRUE(platform::position_calls().empty());
}

TEST_F(wgl_child_window_test, splitting_children_take_their_device_context_on_their_own_monitor) {
  library::start({.parts = 2, .options = {{"OSW_DW_UseSplitParentMethod", 1}}});
  const application bound = prepare_watching_application({860, 100, 1100, 300});
  platform::clear_position_calls();
  EXPECT_TRUE(bind(bound));
  const std::vector<platform::window_facts> children = scene::child_windows(bound.window.hwnd);
  ASSERT_EQ(children.size(), 2u);
  const HWND left = children[0].hwnd;
  const HWND right = children[1].hwnd;
  const int dcs = sights.at(0).taken_dcs;
  const int formats = sights.at(0).set_formats;
  ASSERT_GE(sights.size(), 6u);
  const std::vector<sight> making(sights.begin(), sights.begin() + 6);
  EXPECT_EQ(making, (std::vector<sight>{{left, WM_CREATE, {0, 0, 120, 200}, dcs, formats},
                                        {left, WM_WINDOWPOSCHANGING, {0, 0, 100, 200}, dcs, formats},
                                        {left, WM_WINDOWPOSCHANGING, {0, 0, 120, 200}, dcs + 1, formats},
                                        {right, WM_CREATE, {120, 0, 240, 200}, dcs + 1, formats + 1},
                                        {right, WM_WINDOWPOSCHANGING, {100, 0, 240, 200}, dcs + 1, formats + 1},
                                        {right, WM_WINDOWPOSCHANGING, {120, 0, 240, 200}, dcs + 2, formats + 1}}));
  for (const platform::position_call& call : platform::position_calls()) {
    EXPECT_EQ(call.flags, static_cast<UINT>(SWP_NOZORDER));
    EXPECT_EQ(call.after, nullptr);
    EXPECT_EQ(call.how, platform::delivery::direct);
  }
}

// Around the command that binds the children each stands on its own monitor, and takes its share afterwards.
TEST_F(wgl_child_window_test, splitting_children_are_bound_on_their_own_monitor) {
  library::start({.parts = 2, .options = {{"OSW_DW_UseSplitParentMethod", 1}}});
  const application bound = prepare_application({860, 100, 1100, 300});
  std::array<edges, 2> at_binding = {};
  driver::on_call<wglMakeCurrent_op>([&](driver::live_call& live) {
    const auto hdc = reinterpret_cast<HDC>(live.what.arguments[0]);
    const platform::window_facts child = platform::window(WindowFromDC(hdc));
    if (child.class_name != "__osw_child_window") return;
    at_binding[static_cast<std::size_t>(child.id - 100)] = edges_of(child.rect);
  });
  for (int round = 0; round < 2; ++round) {
    at_binding = {};
    EXPECT_TRUE(bind(bound));
    EXPECT_EQ(at_binding[0], (edges{860, 100, 960, 300}));
    EXPECT_EQ(at_binding[1], (edges{960, 100, 1100, 300}));
    const std::vector<platform::window_facts> children = scene::child_windows(bound.window.hwnd);
    EXPECT_EQ(edges_of(children[0].rect), (edges{860, 100, 980, 300}));
    EXPECT_EQ(edges_of(children[1].rect), (edges{980, 100, 1100, 300}));
    for (int part = 0; part < 2; ++part) {
      const __osw_child_part& child = scene::mapping_of(bound.window.hwnd).parts[part];
      EXPECT_EQ(edges_of(child.screen_rect), edges_of(children[static_cast<std::size_t>(part)].rect));
    }
    EXPECT_TRUE(osw_wglMakeCurrent(nullptr, nullptr));
  }
}

TEST_F(wgl_child_window_test, without_the_option_no_child_is_moved_by_a_binding) {
  library::start();
  const application bound = prepare_application();
  EXPECT_TRUE(bind(bound));
  EXPECT_TRUE(osw_wglMakeCurrent(nullptr, nullptr));
  EXPECT_TRUE(bind(bound));
  EXPECT_TRUE(platform::position_calls().empty());
}

TEST_F(wgl_child_window_test, a_second_binding_makes_no_more_children) {
  library::start();
  const library::rendering rendered = library::start_rendering();
  const __osw_window_mapping* const mapping = &scene::mapping_of(rendered.window.hwnd);
  const int made = platform::call_count("CreateWindowExA");
  // Another device context of the window, another context, and the first pair again.
  const HDC other_hdc = GetWindowDC(rendered.window.hwnd);
  const HGLRC other = osw_wglCreateContext(rendered.window.hdc);
  const int hidden = platform::call_count("CreateWindowExA") - made;
  EXPECT_EQ(hidden, 2);
  EXPECT_TRUE(osw_wglMakeCurrent(other_hdc, rendered.context));
  EXPECT_TRUE(osw_wglMakeCurrent(rendered.window.hdc, other));
  EXPECT_TRUE(osw_wglMakeCurrent(nullptr, nullptr));
  EXPECT_TRUE(osw_wglMakeCurrent(rendered.window.hdc, rendered.context));
  EXPECT_EQ(platform::call_count("CreateWindowExA"), made + hidden);
  EXPECT_EQ(scene::child_windows(rendered.window.hwnd).size(), 2u);
  EXPECT_EQ(&scene::mapping_of(rendered.window.hwnd), mapping);
  EXPECT_EQ(mapping->app_hdc, rendered.window.hdc);
  ReleaseDC(rendered.window.hwnd, other_hdc);
}

// ---- the one application whose window stops clipping its children ----

struct style_case {
  const char* executable;
  const char* list;
  bool clears;
};

struct style_test : wgl_child_window_test, testing::WithParamInterface<style_case> {};

TEST_P(style_test, clipping_of_children) {
  library::start({.executable = GetParam().executable, .list = GetParam().list});
  const application bound = prepare_application();
  const DWORD before = platform::window(bound.window.hwnd).style | WS_CLIPCHILDREN;
  SetWindowLongPtrA(bound.window.hwnd, GWL_STYLE, static_cast<LONG_PTR>(before));
  EXPECT_TRUE(bind(bound));
  EXPECT_EQ(platform::window(bound.window.hwnd).style,
            GetParam().clears ? before & ~static_cast<DWORD>(WS_CLIPCHILDREN) : before);
  // At the first binding alone.
  SetWindowLongPtrA(bound.window.hwnd, GWL_STYLE, static_cast<LONG_PTR>(before));
  EXPECT_TRUE(osw_wglMakeCurrent(nullptr, nullptr));
  EXPECT_TRUE(bind(bound));
  EXPECT_EQ(platform::window(bound.window.hwnd).style, before);
}

INSTANTIATE_TEST_SUITE_P(, style_test,
                         testing::Values(style_case{"C:\\Solid\\SLDWORKS.exe", "SLDWORKS.exe", true},
                                         style_case{"C:\\Solid\\sldworks.EXE", "sldworks.EXE", true},
                                         style_case{"C:\\Solid\\app.exe", "app.exe", false},
                                         style_case{"C:\\SLDWORKS.exe\\SLDWORKS2.exe", "SLDWORKS2.exe", false}));

TEST_F(wgl_child_window_test, a_style_that_does_not_clip_is_not_written) {
  library::start({.executable = "C:\\Solid\\SLDWORKS.exe", .list = "SLDWORKS.exe"});
  const application bound = prepare_application();
  const DWORD before = platform::window(bound.window.hwnd).style;
  ASSERT_EQ(before & WS_CLIPCHILDREN, 0u);
  const int written = platform::call_count("SetWindowLongPtrA");
  EXPECT_TRUE(bind(bound));
  EXPECT_EQ(platform::window(bound.window.hwnd).style, before);
  // The window procedure alone.
  EXPECT_EQ(platform::call_count("SetWindowLongPtrA"), written + 1);
}

// ---- failures ----

struct failure_case {
  const char* function;
  int call;  // from the binding on
  const char* text;
  std::size_t children;  // that stand afterwards
  bool subclassed;
};

struct failure_test : wgl_child_window_test, testing::WithParamInterface<failure_case> {};

TEST_P(failure_test, is_shown_and_tried_again) {
  expects_message_boxes = true;
  const failure_case& failure = GetParam();
  library::start({.parts = 4});
  const application bound = prepare_application();
  const WNDPROC procedure = platform::window(bound.window.hwnd).procedure;
  driver::clear_calls();
  platform::fail_call(failure.function, failure.call);
  // The system has the context current: the application sees success.
  EXPECT_TRUE(bind(bound));
  EXPECT_EQ(scene::boxes(), (std::vector<scene::box>{{bound.window.hwnd, failure.text}}));
  EXPECT_EQ(driver::current_binding().context, bound.context);
  EXPECT_EQ(scene::child_windows(bound.window.hwnd).size(), failure.children);
  EXPECT_EQ(__osw_window_mapping_of(bound.window.hwnd), nullptr);
  EXPECT_EQ(platform::window(bound.window.hwnd).procedure, procedure);
  EXPECT_TRUE(platform::window(bound.window.hwnd).properties.empty());
  const __osw_thread_state* state = scene::own_state();
  EXPECT_EQ(state->mode, mode_no_context);
  EXPECT_EQ(state->gl_table, __osw_gl_table_nocontext);
  EXPECT_EQ(state->window_mapping, nullptr);
  EXPECT_EQ(state->pbuffer, nullptr);
  EXPECT_EQ(state->glrc, nullptr);
  EXPECT_EQ(state->cmd_queue, nullptr);
  EXPECT_EQ(state->current_hdc, bound.window.hdc);
  EXPECT_EQ(state->current_hglrc, bound.context);
  EXPECT_EQ(platform::live_threads(), 0);
  // The next binding starts again, with new children.
  platform::stop_failing(failure.function);
  EXPECT_TRUE(osw_wglMakeCurrent(nullptr, nullptr));
  EXPECT_TRUE(bind(bound));
  EXPECT_EQ(scene::child_windows(bound.window.hwnd).size(), failure.children + 4);
  EXPECT_EQ(scene::own_state()->mode, mode_threaded);
  scene::place(bound.window.hwnd, {50, 60, 450, 360});
  EXPECT_EQ(edges_of(scene::mapping_of(bound.window.hwnd).window_rect), (edges{50, 60, 450, 360}));
}

INSTANTIATE_TEST_SUITE_P(
    , failure_test,
    testing::Values(failure_case{"DescribePixelFormat", 1, "DescribePixelFormat for app window failed!", 0},
                    failure_case{"RegisterClassA", 1, "Cannot register child window class!", 0},
                    failure_case{"CreateWindowExA", 1, "Creating child window failed!", 0},
                    failure_case{"CreateWindowExA", 4, "Creating child window failed!", 3},
                    failure_case{"SetPixelFormat", 1, "SetPixelFormat for child window failed!", 1},
                    failure_case{"SetPixelFormat", 4, "SetPixelFormat for child window failed!", 4},
                    failure_case{"GetDC", 2, "SetPixelFormat for child window failed!", 2},
                    failure_case{"SetPropA", 1, "Subclass window failed!", 4}));

TEST_F(wgl_child_window_test, a_failure_keeps_the_earlier_binding) {
  expects_message_boxes = true;
  library::start();
  const library::rendering rendered = library::start_rendering();
  const __osw_window_mapping* const mapping = &scene::mapping_of(rendered.window.hwnd);
  const application refused = prepare_application({10, 10, 110, 110});
  platform::fail_call("CreateWindowExA", 1);
  driver::clear_calls();
  EXPECT_TRUE(bind(refused));
  EXPECT_EQ(scene::boxes(), (std::vector<scene::box>{{refused.window.hwnd, "Creating child window failed!"}}));
  EXPECT_EQ(scene::own_state()->window_mapping, mapping);
  EXPECT_EQ(scene::own_state()->glrc->app_hglrc, rendered.context);
  EXPECT_EQ(scene::own_state()->mode, mode_threaded);
  for (int part = 0; part < 2; ++part) EXPECT_TRUE(scene::worker_steps(part).empty());
  // Calls go on down the earlier path.
  osw_glClear(1);
  library::finish();
  EXPECT_EQ(library::part_calls(rendered, 0).at(0), driver::expect<glClear_op>(1u));
  EXPECT_EQ(library::part_calls(rendered, 1).at(0), driver::expect<glClear_op>(1u));
}

TEST_F(wgl_child_window_test, a_class_of_that_name_will_do) {
  library::start();
  const application bound = prepare_application();
  platform::fail_call("RegisterClassA", 1, ERROR_CLASS_ALREADY_EXISTS);
  // The class is not there after all, so that the window fails: the registration was taken for good.
  expects_message_boxes = true;
  EXPECT_TRUE(bind(bound));
  EXPECT_EQ(scene::boxes(), (std::vector<scene::box>{{bound.window.hwnd, "Creating child window failed!"}}));
}

TEST_F(wgl_child_window_test, a_device_context_without_a_window) {
  expects_message_boxes = true;
  library::start();
  const application known = prepare_application();
  const HDC hdc = platform::create_windowless_dc();
  platform::set_dc_pixel_format(hdc, 1);
  EXPECT_TRUE(osw_wglMakeCurrent(hdc, known.context));
  EXPECT_EQ(scene::boxes(), (std::vector<scene::box>{{nullptr, "Creating child window failed!"}}));
  EXPECT_EQ(scene::own_state()->window_mapping, nullptr);
  EXPECT_EQ(scene::own_state()->current_hdc, hdc);
  EXPECT_TRUE(osw_wglMakeCurrent(nullptr, nullptr));
  platform::destroy_windowless_dc(hdc);
}

// The children belong to the thread that bound the window first, and end with it.
void expect_children_made_again(library::path way) {
  library::start({.parts = 2, .way = way});
  const application bound = prepare_application();
  const library::app_thread_pointer first = library::start_thread();
  library::run(first, [&bound] {
    EXPECT_TRUE(bind(bound));
    EXPECT_TRUE(osw_wglMakeCurrent(nullptr, nullptr));
  });
  library::end_thread(first);
  ASSERT_NE(__osw_window_mapping_of(bound.window.hwnd), nullptr);
  EXPECT_FALSE(IsWindow(__osw_window_mapping_of(bound.window.hwnd)->parts[0].child_hwnd));
  const LONG_PTR procedure = GetWindowLongPtrA(bound.window.hwnd, GWLP_WNDPROC);

  EXPECT_TRUE(bind(bound));
  const __osw_window_mapping* mapping = __osw_window_mapping_of(bound.window.hwnd);
  EXPECT_EQ(scene::own_state()->window_mapping, mapping);
  for (const __osw_child_part* part = mapping->parts; part < mapping->parts + 2; ++part) {
    EXPECT_EQ(GetParent(part->child_hwnd), bound.window.hwnd);
    EXPECT_EQ(WindowFromDC(part->child_hdc), part->child_hwnd);
  }
  EXPECT_EQ(GetWindowLongPtrA(bound.window.hwnd, GWLP_WNDPROC), procedure);

  const HWND living = mapping->parts[0].child_hwnd;
  EXPECT_TRUE(osw_wglMakeCurrent(nullptr, nullptr));
  EXPECT_TRUE(bind(bound));
  EXPECT_EQ(__osw_window_mapping_of(bound.window.hwnd)->parts[0].child_hwnd, living);
}

TEST_F(wgl_child_window_test, children_that_ended_with_their_thread_are_made_again) {
  expect_children_made_again(library::path::threaded);
}

TEST_F(wgl_child_window_test, the_same_on_the_sequential_path) {
  expect_children_made_again(library::path::sequential);
}

std::vector<__osw_child_part> parts_of(const application& bound) {
  const __osw_window_mapping* mapping = __osw_window_mapping_of(bound.window.hwnd);
  return {mapping->parts, mapping->parts + __osw_part_count};
}

TEST_F(wgl_child_window_test, only_the_child_that_is_gone_is_made_again) {
  library::start({.parts = 4});
  const application bound = prepare_application();
  EXPECT_TRUE(bind(bound));
  EXPECT_TRUE(osw_wglMakeCurrent(nullptr, nullptr));
  const __osw_window_mapping* mapping = __osw_window_mapping_of(bound.window.hwnd);
  const std::vector<__osw_child_part> before = parts_of(bound);
  DestroyWindow(before[2].child_hwnd);

  EXPECT_TRUE(bind(bound));
  EXPECT_EQ(__osw_window_mapping_of(bound.window.hwnd), mapping);
  const std::vector<__osw_child_part> after = parts_of(bound);
  for (const std::size_t part : {0u, 1u, 3u}) {
    EXPECT_EQ(after[part].child_hwnd, before[part].child_hwnd);
    EXPECT_EQ(after[part].child_hdc, before[part].child_hdc);
  }
  EXPECT_NE(after[2].child_hwnd, before[2].child_hwnd);
  EXPECT_EQ(WindowFromDC(after[2].child_hdc), after[2].child_hwnd);
  EXPECT_EQ(GetPixelFormat(after[2].child_hdc), GetPixelFormat(bound.window.hdc));
  EXPECT_EQ(platform::window(after[2].child_hwnd).id, 102);
  EXPECT_EQ(scene::child_windows(bound.window.hwnd).size(), 4u);
}

TEST_F(wgl_child_window_test, a_child_that_cannot_be_made_again_is_tried_again) {
  expects_message_boxes = true;
  library::start({.parts = 4});
  const application bound = prepare_application();
  EXPECT_TRUE(bind(bound));
  EXPECT_TRUE(osw_wglMakeCurrent(nullptr, nullptr));
  const std::vector<__osw_child_part> before = parts_of(bound);
  DestroyWindow(before[1].child_hwnd);

  platform::fail_call("SetPixelFormat", 1);
  EXPECT_TRUE(bind(bound));
  EXPECT_EQ(scene::boxes(), (std::vector<scene::box>{{bound.window.hwnd, "SetPixelFormat for child window failed!"}}));
  EXPECT_EQ(scene::own_state()->mode, mode_no_context);
  platform::stop_failing("SetPixelFormat");
  EXPECT_TRUE(osw_wglMakeCurrent(nullptr, nullptr));
  EXPECT_TRUE(bind(bound));
  EXPECT_EQ(scene::own_state()->mode, mode_threaded);
  const std::vector<__osw_child_part> after = parts_of(bound);
  EXPECT_EQ(after[0].child_hwnd, before[0].child_hwnd);
  EXPECT_EQ(GetPixelFormat(after[1].child_hdc), GetPixelFormat(bound.window.hdc));
}

}  // namespace
