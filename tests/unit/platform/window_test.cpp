// The stand-in for <windows.h>: windows, messages, device contexts.
#include <gtest/gtest.h>

#include <thread>

#include "platform/desktop.h"
#include "platform/faults.h"
#include "platform/process.h"
#include "support/platform_test.h"

using namespace std::chrono_literals;

namespace {

struct window_test : platform_test {};

void register_class(const char* name, WNDPROC procedure = DefWindowProcA) {
  WNDCLASSA window_class = {};
  window_class.style = CS_OWNDC;
  window_class.lpfnWndProc = procedure;
  window_class.lpszClassName = name;
  EXPECT_NE(RegisterClassA(&window_class), 0);
}

HWND create_child(HWND parent, int x, int y, int width, int height, LONG_PTR id = 100) {
  return CreateWindowExA(0, "child", "", WS_CHILD | WS_VISIBLE, x, y, width, height, parent,
                         reinterpret_cast<HMENU>(id), nullptr, nullptr);
}

std::vector<UINT> messages_to(HWND hwnd) {
  std::vector<UINT> found;
  for (const auto& message : platform::messages()) {
    if (message.hwnd == hwnd) found.push_back(message.message);
  }
  return found;
}

TEST_F(window_test, a_class_is_registered_once) {
  register_class("child");
  WNDCLASSA again = {};
  again.lpszClassName = "CHILD";
  EXPECT_EQ(RegisterClassA(&again), 0);
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_CLASS_ALREADY_EXISTS));
}

TEST_F(window_test, a_window_needs_its_class_and_a_child_its_parent) {
  EXPECT_EQ(create_child(nullptr, 0, 0, 1, 1), nullptr);
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_CANNOT_FIND_WND_CLASS));
  register_class("child");
  EXPECT_EQ(create_child(nullptr, 0, 0, 1, 1), nullptr);
  EXPECT_EQ(create_child(reinterpret_cast<HWND>(5), 0, 0, 1, 1), nullptr);
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_WINDOW_HANDLE));
  EXPECT_TRUE(platform::windows().empty());
}

TEST_F(window_test, coordinates_follow_frame_and_parent) {
  register_class("child");
  const HWND top = platform::create_window({.rect = {100, 50, 500, 350}, .frame = {8, 30, 8, 8}});
  const HWND child = create_child(top, 10, 20, 60, 40);
  RECT rect;
  EXPECT_TRUE(GetClientRect(top, &rect));
  EXPECT_EQ(rect.right, 384);
  EXPECT_EQ(rect.bottom, 262);
  EXPECT_TRUE(GetWindowRect(child, &rect));
  EXPECT_EQ(rect.left, 118);
  EXPECT_EQ(rect.top, 100);
  EXPECT_EQ(rect.right, 178);
  POINT point = {1, 2};
  EXPECT_TRUE(ClientToScreen(child, &point));
  EXPECT_EQ(point.x, 119);
  EXPECT_TRUE(ScreenToClient(top, &point));
  EXPECT_EQ(point.x, 11);
  EXPECT_EQ(point.y, 22);
  EXPECT_FALSE(GetClientRect(nullptr, &rect));
  EXPECT_EQ(rect.right, 178);
}

TEST_F(window_test, a_child_tells_its_parent_and_a_pop_up_its_owner) {
  const HWND top = platform::create_window();
  const auto made = [&](DWORD style) { return platform::create_window({.style = style, .parent = top}); };
  EXPECT_EQ(GetParent(top), nullptr);
  EXPECT_EQ(GetParent(made(WS_CHILD)), top);
  EXPECT_EQ(GetParent(made(WS_POPUP | WS_VISIBLE)), top);
  EXPECT_EQ(GetParent(made(WS_OVERLAPPEDWINDOW)), nullptr);
}

TEST_F(window_test, the_mouse_is_over_the_innermost_window_that_takes_it) {
  const HWND top = platform::create_window({.rect = {100, 100, 500, 400}});
  const auto made = [&](DWORD style, RECT rect) {
    return platform::create_window({.rect = rect, .style = WS_CHILD | style, .parent = top});
  };
  made(WS_VISIBLE | WS_DISABLED, {0, 0, 300, 300});
  made(0, {0, 0, 300, 300});
  const HWND taking = made(WS_VISIBLE, {50, 50, 150, 150});
  made(WS_VISIBLE, {50, 50, 150, 150});
  EXPECT_EQ(platform::window_at({99, 100}), nullptr);
  EXPECT_EQ(platform::window_at({100, 100}), top);
  EXPECT_EQ(platform::window_at({149, 150}), top);
  EXPECT_EQ(platform::window_at({150, 150}), taking);
  EXPECT_EQ(platform::window_at({249, 249}), taking);
  EXPECT_EQ(platform::window_at({250, 250}), top);
  const HWND above = platform::create_window({.rect = {140, 140, 200, 200}});
  EXPECT_EQ(platform::window_at({150, 150}), above);
}

TEST_F(window_test, a_move_is_told_and_takes_the_children_along) {
  register_class("child");
  const HWND top = platform::create_window({.rect = {0, 0, 400, 300}});
  const HWND child = create_child(top, 10, 20, 60, 40);
  platform::clear_messages();
  EXPECT_TRUE(SetWindowPos(top, nullptr, 50, 60, 0, 0, SWP_NOSIZE | SWP_NOZORDER));
  EXPECT_EQ(messages_to(top), (std::vector<UINT>{WM_WINDOWPOSCHANGING, WM_WINDOWPOSCHANGED, WM_MOVE}));
  EXPECT_TRUE(messages_to(child).empty());
  EXPECT_EQ(platform::window(child).rect.left, 60);
  EXPECT_EQ(platform::messages().back().lparam, 50 | 60 << 16);
}

TEST_F(window_test, a_size_is_told_and_a_position_that_stays_is_not) {
  const HWND top = platform::create_window({.rect = {0, 0, 400, 300}});
  EXPECT_TRUE(SetWindowPos(top, nullptr, 0, 0, 200, 100, SWP_NOZORDER));
  EXPECT_EQ(messages_to(top), (std::vector<UINT>{WM_WINDOWPOSCHANGING, WM_WINDOWPOSCHANGED, WM_SIZE}));
  platform::clear_messages();
  EXPECT_TRUE(SetWindowPos(top, nullptr, 0, 0, 200, 100, SWP_NOZORDER));
  EXPECT_EQ(messages_to(top), std::vector<UINT>{WM_WINDOWPOSCHANGING});
  EXPECT_TRUE(ShowWindow(top, SW_HIDE));
  EXPECT_FALSE(platform::window(top).style & WS_VISIBLE);
  EXPECT_EQ(platform::position_calls().size(), 2u);
}

LRESULT forward_to_default(HWND hwnd, UINT message, WPARAM wparam, LPARAM lparam) {
  return CallWindowProcA(DefWindowProcA, hwnd, message, wparam, lparam);
}

TEST_F(window_test, a_procedure_is_replaced) {
  const HWND top = platform::create_window();
  const LONG_PTR previous = SetWindowLongPtrA(top, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(forward_to_default));
  EXPECT_EQ(previous, reinterpret_cast<LONG_PTR>(DefWindowProcA));
  EXPECT_EQ(GetWindowLongPtrA(top, GWLP_WNDPROC), reinterpret_cast<LONG_PTR>(forward_to_default));
  SetWindowPos(top, nullptr, 1, 1, 10, 10, SWP_NOZORDER);
  EXPECT_EQ(messages_to(top), (std::vector<UINT>{WM_WINDOWPOSCHANGING, WM_WINDOWPOSCHANGED, WM_MOVE, WM_SIZE}));
}

TEST_F(window_test, properties_have_names_without_case) {
  const HWND top = platform::create_window();
  int value;
  EXPECT_EQ(GetPropA(top, "name"), nullptr);
  EXPECT_TRUE(SetPropA(top, "Name", &value));
  EXPECT_EQ(GetPropA(top, "name"), &value);
  EXPECT_EQ(RemovePropA(top, "NAME"), &value);
  EXPECT_EQ(RemovePropA(top, "name"), nullptr);
  EXPECT_FALSE(SetPropA(nullptr, "name", &value));
}

TEST_F(window_test, descendants_are_enumerated) {
  register_class("child");
  const HWND top = platform::create_window();
  const HWND child = create_child(top, 0, 0, 5, 5);
  const HWND grandchild = create_child(child, 0, 0, 5, 5);
  platform::create_window({.style = WS_POPUP, .parent = top});
  std::vector<HWND> found;
  EnumChildWindows(
      top,
      [](HWND hwnd, LPARAM data) {
        reinterpret_cast<std::vector<HWND>*>(data)->push_back(hwnd);
        return TRUE;
      },
      reinterpret_cast<LPARAM>(&found));
  EXPECT_EQ(found, (std::vector<HWND>{child, grandchild}));
  EXPECT_EQ(GetParent(grandchild), child);
  EXPECT_EQ(GetParent(top), nullptr);
}

TEST_F(window_test, the_end_of_a_window_ends_its_children_and_device_contexts) {
  register_class("child");
  const HWND top = platform::create_window();
  const HWND child = create_child(top, 0, 0, 5, 5);
  const HDC own = GetDC(child);
  EXPECT_EQ(GetDC(child), own);
  EXPECT_EQ(WindowFromDC(own), child);
  const HDC whole = GetWindowDC(child);
  EXPECT_NE(whole, own);
  EXPECT_EQ(platform::leaks(true).size(), 3u);
  platform::clear_messages();
  EXPECT_TRUE(DestroyWindow(top));
  std::vector<HWND> destroyed;
  for (const auto& message : platform::messages()) {
    if (message.message == WM_DESTROY) destroyed.push_back(message.hwnd);
  }
  EXPECT_EQ(destroyed, (std::vector<HWND>{top, child}));
  EXPECT_EQ(WindowFromDC(own), nullptr);
  EXPECT_EQ(GetObjectType(whole), 0u);
  EXPECT_TRUE(platform::leaks(true).empty());
  EXPECT_FALSE(DestroyWindow(top));
}

TEST_F(window_test, a_pixel_format_is_the_windows_and_is_set_once) {
  const HWND top = platform::create_window();
  const HDC hdc = GetDC(top);
  PIXELFORMATDESCRIPTOR descriptor;
  EXPECT_EQ(GetPixelFormat(hdc), 0);
  EXPECT_FALSE(SetPixelFormat(hdc, 99, &descriptor));
  EXPECT_TRUE(SetPixelFormat(hdc, 3, &descriptor));
  EXPECT_TRUE(SetPixelFormat(hdc, 3, &descriptor));
  EXPECT_FALSE(SetPixelFormat(hdc, 4, &descriptor));
  EXPECT_EQ(GetPixelFormat(GetWindowDC(top)), 3);
  EXPECT_GT(DescribePixelFormat(hdc, 3, sizeof descriptor, &descriptor), 0);
  EXPECT_EQ(descriptor.cStencilBits, 3);
  EXPECT_EQ(DescribePixelFormat(hdc, 99, sizeof descriptor, &descriptor), 0);
  const HDC pbuffer = platform::create_windowless_dc();
  EXPECT_EQ(WindowFromDC(pbuffer), nullptr);
  EXPECT_EQ(GetObjectType(pbuffer), OBJ_MEMDC);
  EXPECT_EQ(GetObjectType(hdc), OBJ_DC);
}

TEST_F(window_test, a_procedure_runs_on_the_owner_when_it_pumps) {
  const HWND top = platform::create_window({.rect = {0, 0, 400, 300}});
  const DWORD me = GetCurrentThreadId();
  std::atomic<bool> done{false};
  DWORD other = 0;
  const HANDLE mover = platform::start_thread([&] {
    other = GetCurrentThreadId();
    EXPECT_TRUE(SetWindowPos(top, nullptr, 5, 5, 10, 10, SWP_NOZORDER));
    done = true;
  });
  EXPECT_TRUE(platform::pump_until([&] { return done.load(); }));
  EXPECT_TRUE(platform::join(mover));
  for (const auto& message : platform::messages()) EXPECT_EQ(message.thread_id, me);
  EXPECT_EQ(platform::messages()[0].sender_id, other);
  EXPECT_EQ(platform::position_calls()[0].how, platform::delivery::waited);
  EXPECT_TRUE(platform::stalls().empty());
}

TEST_F(window_test, a_wait_for_a_thread_that_does_not_pump_is_a_stall) {
  const HWND top = platform::create_window({.rect = {0, 0, 400, 300}});
  platform::set_patience(20ms);
  EXPECT_TRUE(platform::join(
      platform::start_thread([&] { EXPECT_FALSE(SetWindowPos(top, nullptr, 5, 5, 10, 10, SWP_NOZORDER)); })));
  ASSERT_EQ(platform::stalls().size(), 1u);
  EXPECT_EQ(platform::stalls()[0].hwnd, top);
  EXPECT_EQ(platform::stalls()[0].owner_id, GetCurrentThreadId());
  EXPECT_EQ(platform::pump(), 0);
}

TEST_F(window_test, an_asynchronous_position_waits_for_nobody) {
  const HWND top = platform::create_window({.rect = {0, 0, 400, 300}});
  platform::join(platform::start_thread(
      [&] { EXPECT_TRUE(SetWindowPos(top, nullptr, 5, 6, 10, 10, SWP_NOZORDER | SWP_ASYNCWINDOWPOS)); }));
  EXPECT_EQ(platform::window(top).rect.left, 0);
  EXPECT_EQ(platform::pump(), 1);
  EXPECT_EQ(platform::window(top).rect.left, 5);
  EXPECT_EQ(platform::position_calls()[0].how, platform::delivery::posted);
}

TEST_F(window_test, two_threads_that_send_to_each_other_go_on) {
  register_class("child");
  const HWND mine = platform::create_window();
  std::atomic<HWND> theirs{nullptr};
  const HANDLE other = platform::start_thread([&] {
    theirs = platform::create_window();
    platform::send_message(mine, WM_SIZE, 0, 0);
    EXPECT_TRUE(platform::pump_until([] { return platform::messages().size() == 2; }));
  });
  while (theirs == nullptr) std::this_thread::sleep_for(1ms);
  platform::send_message(theirs, WM_MOVE, 0, 0);
  EXPECT_TRUE(platform::pump_until([] { return platform::messages().size() == 2; }));
  EXPECT_TRUE(platform::join(other));
  EXPECT_TRUE(platform::stalls().empty());
}

TEST_F(window_test, a_window_is_ended_by_its_thread_alone) {
  const HWND top = platform::create_window();
  platform::join(platform::start_thread([&] {
    EXPECT_FALSE(DestroyWindow(top));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_ACCESS_DENIED));
    platform::create_window();
  }));
  // The thread's own window went with it.
  EXPECT_EQ(platform::windows().size(), 1u);
}

}  // namespace
