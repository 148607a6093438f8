// The procedures that follow an application's window and its ancestors: which windows get them, and how they go.
#include <gtest/gtest.h>

#include "pipeline/cmd_queue.h"
#include "support/wgl_scene.h"

namespace {

using scene::edges;
using scene::edges_of;

constexpr char subclass_property[] = "subclass_window_prop_str";
constexpr char mapping_name[] = "child_window_mapping_prop_str";

struct wgl_subclass_test : library::process_test {};

// What the application's own procedure has been given, with the place of the first part's child at that time.
struct given {
  HWND hwnd;
  UINT message;
  edges child;
  bool has_mapping;
};
std::vector<given> got;
HWND watched;

LRESULT application_procedure(HWND hwnd, UINT message, WPARAM wparam, LPARAM lparam) {
  const std::vector<platform::window_facts> children = scene::child_windows(watched);
  got.push_back({hwnd, message, children.empty() ? edges{} : edges_of(children[0].rect),
                 GetPropA(watched, mapping_name) != nullptr});
  return DefWindowProcA(hwnd, message, wparam, lparam);
}

std::vector<UINT> messages_to(HWND hwnd) {
  std::vector<UINT> found;
  for (const given& one : got) {
    if (one.hwnd == hwnd) found.push_back(one.message);
  }
  return found;
}

// A window of 400 by 300 within `depth` ancestors, each 10 pixels further in. The outermost comes first.
std::vector<HWND> open_nested(int depth) {
  std::vector<HWND> chain;
  for (int i = 0; i <= depth; ++i) {
    const RECT rect = i == 0 ? RECT{100, 100, 500, 400} : RECT{10, 10, 410, 310};
    const DWORD style = i == 0 ? WS_OVERLAPPEDWINDOW | WS_VISIBLE : WS_CHILD | WS_VISIBLE;
    chain.push_back(platform::create_window({.rect = rect,
                                             .style = style,
                                             .parent = chain.empty() ? nullptr : chain.back(),
                                             .procedure = application_procedure}));
  }
  watched = chain.back();
  return chain;
}

library::rendering draw_in(HWND hwnd) {
  library::app_window window{hwnd, GetDC(hwnd)};
  PIXELFORMATDESCRIPTOR descriptor;
  platform::describe_pixel_format(1, &descriptor);
  EXPECT_TRUE(SetPixelFormat(window.hdc, 1, &descriptor));
  return library::start_rendering_in(window);
}

bool is_subclassed(HWND hwnd) {
  return GetPropA(hwnd, subclass_property) != nullptr;
}

TEST_F(wgl_subclass_test, the_window_and_all_its_ancestors) {
  library::start();
  const std::vector<HWND> chain = open_nested(3);
  const HWND stranger = platform::create_window({.procedure = application_procedure});
  const library::rendering rendered = draw_in(chain.back());
  for (const HWND hwnd : chain) {
    EXPECT_EQ(GetPropA(hwnd, subclass_property), reinterpret_cast<HANDLE>(application_procedure));
    EXPECT_NE(platform::window(hwnd).procedure, application_procedure);
    EXPECT_EQ(GetPropA(hwnd, mapping_name) != nullptr, hwnd == rendered.window.hwnd);
  }
  EXPECT_FALSE(is_subclassed(stranger));
  EXPECT_EQ(platform::window(stranger).procedure, application_procedure);
  for (const platform::window_facts& child : scene::child_windows(rendered.window.hwnd)) {
    EXPECT_FALSE(is_subclassed(child.hwnd));
  }
}

TEST_F(wgl_subclass_test, more_than_six_ancestors_have_one_procedure) {
  library::start();
  const std::vector<HWND> chain = open_nested(9);
  const library::rendering rendered = draw_in(chain.back());
  const WNDPROC procedure = platform::window(chain[0]).procedure;
  for (std::size_t i = 0; i + 1 < chain.size(); ++i) EXPECT_EQ(platform::window(chain[i]).procedure, procedure);
  EXPECT_NE(platform::window(chain.back()).procedure, procedure);
  // The outermost of them is followed.
  scene::place(chain[0], {0, 0, 400, 300});
  EXPECT_EQ(edges_of(scene::child_windows(chain.back())[0].rect), (edges{90, 90, 490, 390}));
  EXPECT_EQ(edges_of(scene::mapping_of(chain.back()).window_rect), (edges{90, 90, 490, 390}));
}

// The platform names the owner of a pop-up as its parent, and that of any other window not at all.
TEST_F(wgl_subclass_test, the_owner_of_a_pop_up_and_what_it_stands_in) {
  library::start();
  const std::vector<HWND> owners = open_nested(1);
  watched = platform::create_window({.rect = {100, 100, 500, 400},
                                     .style = WS_POPUP | WS_VISIBLE,
                                     .parent = owners[1],
                                     .procedure = application_procedure});
  draw_in(watched);
  for (const HWND owner : owners) EXPECT_TRUE(is_subclassed(owner));
  // It stays where it is when its owner moves.
  platform::clear_position_calls();
  scene::place(owners[0], {0, 0, 400, 300});
  EXPECT_EQ(platform::position_calls().size(), 1u);
  EXPECT_EQ(edges_of(scene::mapping_of(watched).window_rect), (edges{100, 100, 500, 400}));
  EXPECT_TRUE(DestroyWindow(watched));
  EXPECT_TRUE(is_subclassed(owners[0]));
  EXPECT_TRUE(DestroyWindow(owners[0]));
  EXPECT_EQ(messages_to(owners[0]).back(), static_cast<UINT>(WM_NCDESTROY));
}

TEST_F(wgl_subclass_test, the_owner_of_a_window_with_a_frame_is_left_alone) {
  library::start();
  const HWND owner = platform::create_window({.procedure = application_procedure});
  watched = platform::create_window({.parent = owner, .procedure = application_procedure});
  draw_in(watched);
  EXPECT_TRUE(is_subclassed(watched));
  EXPECT_FALSE(is_subclassed(owner));
  EXPECT_EQ(platform::window(owner).procedure, application_procedure);
}

TEST_F(wgl_subclass_test, ancestors_are_replaced_once) {
  library::start();
  const HWND parent = platform::create_window({.procedure = application_procedure});
  std::vector<HWND> windows;
  for (int i = 0; i < 2; ++i) {
    windows.push_back(platform::create_window({.rect = {200 * i, 0, 200 * i + 200, 100},
                                               .style = WS_CHILD | WS_VISIBLE,
                                               .parent = parent,
                                               .procedure = application_procedure}));
  }
  watched = windows[0];
  draw_in(windows[0]);
  const WNDPROC procedure = platform::window(parent).procedure;
  draw_in(windows[1]);
  EXPECT_EQ(platform::window(parent).procedure, procedure);
  EXPECT_EQ(GetPropA(parent, subclass_property), reinterpret_cast<HANDLE>(application_procedure));
  // Both follow it.
  scene::place(parent, {0, 0, 640, 480});
  for (std::size_t i = 0; i < 2; ++i) {
    const auto x = static_cast<LONG>(200 * i);
    EXPECT_EQ(edges_of(scene::mapping_of(windows[i]).window_rect), (edges{x, 0, x + 200, 100}));
  }
}

// Whichever is bound first, each goes on following for itself and for the other.
struct nesting_test : wgl_subclass_test, testing::WithParamInterface<bool> {};

TEST_P(nesting_test, a_window_that_is_bound_and_an_ancestor) {
  library::start({.parts = 1});
  const std::vector<HWND> chain = open_nested(1);
  const bool outer_first = GetParam();
  draw_in(chain[outer_first ? 0 : 1]);
  draw_in(chain[outer_first ? 1 : 0]);
  got.clear();
  scene::place(chain[0], {20, 30, 420, 330});
  EXPECT_EQ(edges_of(scene::mapping_of(chain[0]).window_rect), (edges{20, 30, 420, 330}));
  EXPECT_EQ(edges_of(scene::mapping_of(chain[1]).window_rect), (edges{30, 40, 430, 340}));
  EXPECT_EQ(messages_to(chain[0]), (std::vector<UINT>{WM_WINDOWPOSCHANGING, WM_WINDOWPOSCHANGED, WM_MOVE}));
  EXPECT_TRUE(messages_to(chain[1]).empty());
  EXPECT_TRUE(DestroyWindow(chain[0]));
  EXPECT_EQ(messages_to(chain[0]).back(), static_cast<UINT>(WM_NCDESTROY));
  EXPECT_EQ(messages_to(chain[1]).back(), static_cast<UINT>(WM_NCDESTROY));
}

INSTANTIATE_TEST_SUITE_P(, nesting_test, testing::Bool());

// Every message goes on to the application, after the geometry has been updated.
TEST_F(wgl_subclass_test, the_application_sees_what_is_already_in_place) {
  library::start({.parts = 1});
  const std::vector<HWND> chain = open_nested(1);
  draw_in(chain[1]);
  got.clear();
  scene::place(chain[1], {30, 40, 230, 140});
  EXPECT_EQ(messages_to(chain[1]), (std::vector<UINT>{WM_WINDOWPOSCHANGING, WM_WINDOWPOSCHANGED, WM_MOVE, WM_SIZE}));
  // At the first the window has not moved: only the last three change anything.
  EXPECT_EQ(got.at(0).child, (edges{110, 110, 510, 410}));
  for (std::size_t i = 1; i < 4; ++i) EXPECT_EQ(got.at(i).child, (edges{130, 140, 330, 240}));
  got.clear();
  scene::place(chain[0], {200, 300, 600, 600});
  EXPECT_EQ(messages_to(chain[0]), (std::vector<UINT>{WM_WINDOWPOSCHANGING, WM_WINDOWPOSCHANGED, WM_MOVE}));
  EXPECT_TRUE(messages_to(chain[1]).empty());
  for (std::size_t i = 1; i < 3; ++i) EXPECT_EQ(got.at(i).child, (edges{230, 340, 430, 440}));
}

constexpr UINT own_message = 0x405;

LRESULT answering_procedure(HWND, UINT message, WPARAM wparam, LPARAM lparam) {
  return message == own_message ? static_cast<LRESULT>(wparam * 1000 + static_cast<WPARAM>(lparam)) : 0;
}

TEST_F(wgl_subclass_test, parameters_and_results_pass_through) {
  library::start();
  const HWND parent = platform::create_window({.procedure = answering_procedure});
  const HWND hwnd = platform::create_window(
      {.rect = {0, 0, 50, 50}, .style = WS_CHILD, .parent = parent, .procedure = answering_procedure});
  draw_in(hwnd);
  EXPECT_EQ(platform::send_message(hwnd, own_message, 7, 11), 7011);
  EXPECT_EQ(platform::send_message(parent, own_message, 8, 12), 8012);
}

TEST_F(wgl_subclass_test, the_end_of_the_window) {
  library::start();
  const std::vector<HWND> chain = open_nested(1);
  const library::rendering rendered = draw_in(chain[1]);
  osw_glClear(3);
  const u32 syncs = scene::own_state()->cmd_queue->send_sync_count;
  driver::clear_calls();
  got.clear();
  int flushed = 0;
  // The workers have drained before the record goes.
  driver::on_call<glClear_op>([&](driver::live_call& live) {
    if (live.what.context == rendered.context) return;
    EXPECT_NE(GetPropA(rendered.window.hwnd, mapping_name), nullptr);
  });
  EXPECT_TRUE(DestroyWindow(chain[1]));
  for (int part = 0; part < 2; ++part) {
    for (const driver::call& call : library::part_calls(rendered, part)) {
      EXPECT_EQ(call, driver::expect<glClear_op>(3u));
      ++flushed;
    }
  }
  EXPECT_EQ(flushed, 2);
  EXPECT_EQ(scene::own_state()->cmd_queue->send_sync_count, syncs + 1);
  // The application's procedure hears of it after the teardown.
  ASSERT_FALSE(messages_to(chain[1]).empty());
  EXPECT_EQ(messages_to(chain[1]), (std::vector<UINT>{WM_DESTROY, WM_NCDESTROY}));
  for (const given& one : got) {
    EXPECT_FALSE(one.hwnd == chain[1] && one.has_mapping);
  }
  // Its parent goes on being followed.
  EXPECT_TRUE(is_subclassed(chain[0]));
  EXPECT_TRUE(scene::child_windows(chain[1]).empty());
}

struct properties_at_end {
  WNDPROC procedure;
  std::vector<std::string> properties;
};
std::vector<properties_at_end> ends;

LRESULT noting_procedure(HWND hwnd, UINT message, WPARAM wparam, LPARAM lparam) {
  if (message == WM_DESTROY) ends.push_back({platform::window(hwnd).procedure, platform::window(hwnd).properties});
  return DefWindowProcA(hwnd, message, wparam, lparam);
}

TEST_F(wgl_subclass_test, procedures_are_restored_and_properties_removed) {
  library::start();
  const HWND parent = platform::create_window({.procedure = noting_procedure});
  const HWND hwnd = platform::create_window(
      {.rect = {0, 0, 50, 50}, .style = WS_CHILD, .parent = parent, .procedure = noting_procedure});
  draw_in(hwnd);
  const u32 syncs = scene::own_state()->cmd_queue->send_sync_count;
  EXPECT_TRUE(DestroyWindow(parent));
  ASSERT_EQ(ends.size(), 2u);
  for (const properties_at_end& end : ends) {
    EXPECT_EQ(end.procedure, noting_procedure);
    EXPECT_TRUE(end.properties.empty());
  }
  // The parent has nothing to wait for.
  EXPECT_EQ(scene::own_state()->cmd_queue->send_sync_count, syncs + 1);
  EXPECT_TRUE(platform::windows().empty());
}

// A window of a thread that has never drawn anything, drawn to by another one.
TEST_F(wgl_subclass_test, the_owner_of_the_window_has_no_queue) {
  library::start();
  const library::app_window window = library::open_window();
  const library::app_thread_pointer thread = library::start_thread();
  library::run(thread, [&] { library::start_rendering_in(window); });
  EXPECT_TRUE(is_subclassed(window.hwnd));
  EXPECT_TRUE(DestroyWindow(window.hwnd));
  EXPECT_EQ(scene::own_state()->cmd_queue, nullptr);
  library::run(thread, [] { osw_glFinish(); });
  library::end_thread(thread);
}

// A view of 100 by 100 within a frame.
HWND open_view(HWND frame, LONG left) {
  return platform::create_window({.rect = {left, 0, left + 100, 100},
                                  .style = WS_CHILD | WS_VISIBLE,
                                  .parent = frame,
                                  .procedure = application_procedure});
}

// One thread is between its look at the frame's procedure and its change, and another does both.
struct race_test : wgl_subclass_test, testing::WithParamInterface<const char*> {};

TEST_P(race_test, two_threads_bind_views_of_one_frame) {
  library::start({.parts = 1});
  const HWND frame = platform::create_window({.procedure = application_procedure});
  const library::app_thread_pointer first = library::start_thread();
  const library::app_thread_pointer second = library::start_thread();
  // The first such call of the binding is of the view itself, the second of the frame.
  HWND views[2] = {};
  platform::before_call(GetParam(), 2,
                        [&] { library::run(second, [&] { draw_in(views[1] = open_view(frame, 200)); }); });
  library::run(first, [&] { draw_in(views[0] = open_view(frame, 0)); });
  EXPECT_EQ(GetPropA(frame, subclass_property), reinterpret_cast<HANDLE>(application_procedure));
  got.clear();
  watched = frame;
  scene::place(frame, {20, 30, 660, 510});
  EXPECT_EQ(messages_to(frame), (std::vector<UINT>{WM_WINDOWPOSCHANGING, WM_WINDOWPOSCHANGED, WM_MOVE}))
      << "once each, and not by way of itself";
  library::run(first, [&] { DestroyWindow(views[0]); });
  library::run(second, [&] { DestroyWindow(views[1]); });
  library::end_thread(first);
  library::end_thread(second);
}

INSTANTIATE_TEST_SUITE_P(calls, race_test, testing::Values("SetPropA", "SetWindowLongPtrA"),
                         [](const auto& named) { return std::string(named.param); });

// Its property has the same name, and leads into that process's memory.
TEST_F(wgl_subclass_test, a_window_of_another_process_is_never_followed) {
  library::start({.parts = 1});
  const std::vector<HWND> chain = open_nested(1);
  draw_in(chain[1]);
  const HWND foreign = open_view(chain[0], 200);
  EXPECT_TRUE(SetPropA(foreign, mapping_name, reinterpret_cast<HANDLE>(8)));
  platform::give_to_process(foreign, 77);
  scene::place(chain[0], {20, 30, 420, 330});
  EXPECT_EQ(edges_of(scene::mapping_of(chain[1]).window_rect), (edges{30, 40, 430, 340}));
  EXPECT_TRUE(RemovePropA(foreign, mapping_name));
}

TEST_F(wgl_subclass_test, a_frame_of_another_process_keeps_its_procedure) {
  library::start({.parts = 1});
  const std::vector<HWND> chain = open_nested(1);
  platform::give_to_process(chain[0], 77);
  draw_in(chain[1]);
  EXPECT_TRUE(is_subclassed(chain[1]));
  EXPECT_FALSE(is_subclassed(chain[0]));
  EXPECT_EQ(platform::window(chain[0]).procedure, application_procedure);
}

// What the frame's thread finds of a view that belongs to another thread.
struct two_thread_test : wgl_subclass_test {
  void SetUp() override {
    library::start({.parts = 1});
    frame = platform::create_window({.rect = {100, 100, 700, 500}, .procedure = application_procedure});
    thread = library::start_thread();
    library::run(thread, [this] {
      view = open_view(frame, 50);
      draw_in(view);
    });
  }
  void TearDown() override {
    library::run(thread, [this] { DestroyWindow(view); });
    library::end_thread(thread);
    library::process_test::TearDown();
  }
  HWND frame = nullptr, view = nullptr;
  library::app_thread_pointer thread;
};

TEST_F(two_thread_test, a_view_that_goes_while_its_frame_is_followed) {
  platform::before_call("GetClientRect", 1, [this] { library::run(thread, [this] { DestroyWindow(view); }); });
  scene::place(frame, {20, 30, 620, 430});
  EXPECT_FALSE(IsWindow(view));
}

TEST_F(two_thread_test, a_view_that_moves_while_its_frame_is_followed) {
  const int before = platform::call_count("GetClientRect");
  // The first such call is that of the frame's own move.
  platform::before_call("SetWindowPos", 2, [this] {
    library::run(thread, [this] { scene::place(view, {70, 80, 270, 180}); });
  });
  scene::place(frame, {20, 30, 620, 430});
  library::run(thread, [] { platform::pump(); });
  EXPECT_EQ(edges_of(scene::mapping_of(view).window_rect), (edges{90, 110, 290, 210}));
  EXPECT_EQ(edges_of(scene::child_windows(view)[0].rect), (edges{90, 110, 290, 210}));
  EXPECT_GT(platform::call_count("GetClientRect"), before + 1) << "the thread that was at it does it once more";
}

}  // namespace
