// Where windows are, how they move, and the messages that tell of it.
#include <algorithm>

#include "platform/process.h"
#include "state.h"
#include "window_table.h"

namespace platform {

namespace {

// Guards the two records.
std::mutex lock;
std::vector<position_call> calls;
std::vector<message_record> given;

LPARAM pair_of(int low, int high) {
  return static_cast<LPARAM>(static_cast<UINT>(low & 0xFFFF) | static_cast<UINT>(high & 0xFFFF) << 16);
}

RECT moved(const RECT& rect, int x, int y) {
  return {rect.left + x, rect.top + y, rect.right + x, rect.bottom + y};
}

// On the owner's thread.
LRESULT give(DWORD sender, HWND hwnd, UINT message, WPARAM wparam, LPARAM lparam) {
  WNDPROC procedure;
  {
    const std::lock_guard guard(window_lock);
    const window_record* window = find_window(hwnd);
    if (window == nullptr) return 0;
    procedure = window->procedure;
  }
  {
    const DWORD me = GetCurrentThreadId();
    const std::lock_guard guard(lock);
    given.push_back({me, sender, hwnd, message, wparam, lparam});
  }
  return procedure(hwnd, message, wparam, lparam);
}

// With the window lock held: the rectangle that the position asks for, and the flags less what stays as it was.
RECT wanted_rect(const window_record& window, WINDOWPOS& position) {
  const int width = window.rect.right - window.rect.left;
  const int height = window.rect.bottom - window.rect.top;
  if (position.flags & SWP_NOMOVE) position.x = window.rect.left, position.y = window.rect.top;
  if (position.flags & SWP_NOSIZE) position.cx = width, position.cy = height;
  position.cx = std::max(position.cx, 0);
  position.cy = std::max(position.cy, 0);
  if (position.x == window.rect.left && position.y == window.rect.top) position.flags |= SWP_NOMOVE;
  if (position.cx == width && position.cy == height) position.flags |= SWP_NOSIZE;
  return {position.x, position.y, position.x + position.cx, position.y + position.cy};
}

void show_or_hide(window_record& window, WINDOWPOS& position) {
  const bool visible = (window.style & WS_VISIBLE) != 0;
  if (position.flags & SWP_SHOWWINDOW) {
    window.style |= WS_VISIBLE;
    if (visible) position.flags &= ~SWP_SHOWWINDOW;
  }
  if (position.flags & SWP_HIDEWINDOW) {
    window.style &= ~WS_VISIBLE;
    if (!visible) position.flags &= ~SWP_HIDEWINDOW;
  }
}

// Stores the new rectangle; false when nothing about the window has changed.
bool apply(WINDOWPOS& position) {
  const std::lock_guard guard(window_lock);
  window_record* window = find_window(position.hwnd);
  if (window == nullptr) return false;
  const RECT before = client_rect(*window);
  window->rect = wanted_rect(*window, position);
  show_or_hide(*window, position);
  const RECT after = client_rect(*window);
  if (before.left == after.left && before.top == after.top) position.flags |= SWP_NOCLIENTMOVE;
  if (before.right - before.left == after.right - after.left &&
      before.bottom - before.top == after.bottom - after.top) {
    position.flags |= SWP_NOCLIENTSIZE;
  }
  constexpr UINT unchanged = SWP_NOMOVE | SWP_NOSIZE | SWP_NOZORDER;
  constexpr UINT always_told = SWP_SHOWWINDOW | SWP_HIDEWINDOW | SWP_FRAMECHANGED;
  return (position.flags & unchanged) != unchanged || (position.flags & always_told) != 0;
}

// On the owner's thread.
void change_position(DWORD sender, WINDOWPOS position) {
  const LPARAM as_parameter = reinterpret_cast<LPARAM>(&position);
  if (!(position.flags & SWP_NOSENDCHANGING)) give(sender, position.hwnd, WM_WINDOWPOSCHANGING, 0, as_parameter);
  if (apply(position)) give(sender, position.hwnd, WM_WINDOWPOSCHANGED, 0, as_parameter);
}

// What DefWindowProcA makes of a change of position.
void tell_move_and_size(HWND hwnd, const WINDOWPOS& position) {
  RECT client;
  POINT origin;
  {
    const std::lock_guard guard(window_lock);
    const window_record* window = find_window(hwnd);
    if (window == nullptr) return;
    client = client_rect(*window);
    origin = origin_of(*window);
  }
  if (!(position.flags & SWP_NOCLIENTMOVE)) {
    send_message(hwnd, WM_MOVE, 0, pair_of(client.left - origin.x, client.top - origin.y));
  }
  if (!(position.flags & SWP_NOCLIENTSIZE)) {
    send_message(hwnd, WM_SIZE, SIZE_RESTORED, pair_of(client.right - client.left, client.bottom - client.top));
  }
}

DWORD owner_of(HWND hwnd) {
  return GetWindowThreadProcessId(hwnd, nullptr);
}

}  // namespace

POINT origin_of(const window_record& window) {
  if (!is_child(window)) return {0, 0};
  const window_record* parent = find_window(window.parent);
  if (parent == nullptr) return {0, 0};
  const RECT client = client_rect(*parent);
  return {client.left, client.top};
}

RECT screen_rect(const window_record& window) {
  const POINT origin = origin_of(window);
  return moved(window.rect, origin.x, origin.y);
}

RECT client_rect(const window_record& window) {
  RECT client = screen_rect(window);
  client.left += window.frame.left;
  client.top += window.frame.top;
  client.right = std::max(client.left, client.right - window.frame.right);
  client.bottom = std::max(client.top, client.bottom - window.frame.bottom);
  return client;
}

LRESULT send_message(HWND hwnd, UINT message, WPARAM wparam, LPARAM lparam) {
  const DWORD owner = owner_of(hwnd);
  if (owner == 0) return 0;
  const DWORD me = GetCurrentThreadId();
  // The work may still run after this thread has given up waiting for it.
  const auto result = std::make_shared<LRESULT>(0);
  const bool ran =
      run_on_owner(owner, hwnd, "SendMessageA", true, [=] { *result = give(me, hwnd, message, wparam, lparam); });
  return ran ? *result : 0;
}

std::vector<position_call> position_calls() {
  const std::lock_guard guard(lock);
  return calls;
}

void clear_position_calls() {
  const std::lock_guard guard(lock);
  calls.clear();
}

std::vector<message_record> messages() {
  const std::lock_guard guard(lock);
  return given;
}

void clear_messages() {
  const std::lock_guard guard(lock);
  given.clear();
}

void reset_positions() {
  clear_position_calls();
  clear_messages();
}

}  // namespace platform

using namespace platform;

extern "C" LRESULT DefWindowProcA(HWND hwnd, UINT message, WPARAM, LPARAM lparam) {
  if (message == WM_WINDOWPOSCHANGED) tell_move_and_size(hwnd, *reinterpret_cast<const WINDOWPOS*>(lparam));
  return 0;
}

extern "C" LRESULT SendMessageTimeoutA(HWND hwnd, UINT message, WPARAM wparam, LPARAM lparam, UINT, UINT milliseconds,
                                       DWORD_PTR* result) {
  const DWORD owner = owner_of(hwnd);
  if (ordered_to_fail("SendMessageTimeoutA") || owner == 0) return 0;
  const DWORD me = GetCurrentThreadId();
  const std::chrono::milliseconds time(milliseconds);
  const auto answer = std::make_shared<LRESULT>(0);
  if (!run_on_owner_within(owner, time, [=] { *answer = give(me, hwnd, message, wparam, lparam); })) return 0;
  *result = static_cast<DWORD_PTR>(*answer);
  return 1;
}

extern "C" LRESULT CallWindowProcA(WNDPROC procedure, HWND hwnd, UINT message, WPARAM wparam, LPARAM lparam) {
  return procedure(hwnd, message, wparam, lparam);
}

extern "C" BOOL SetWindowPos(HWND hwnd, HWND after, int x, int y, int width, int height, UINT flags) {
  const DWORD me = GetCurrentThreadId();
  const DWORD owner = owner_of(hwnd);
  const bool posted = (flags & SWP_ASYNCWINDOWPOS) != 0;
  {
    const delivery how = owner == me ? delivery::direct : posted ? delivery::posted : delivery::waited;
    const std::lock_guard guard(lock);
    calls.push_back({me, hwnd, after, x, y, width, height, flags, how});
  }
  if (ordered_to_fail("SetWindowPos") || owner == 0) return FALSE;
  const WINDOWPOS position = {hwnd, after, x, y, width, height, flags};
  return run_on_owner(owner, hwnd, "SetWindowPos", !posted, [=] { change_position(me, position); });
}

extern "C" BOOL ShowWindow(HWND hwnd, int command) {
  const bool was_visible = (GetWindowLongPtrA(hwnd, GWL_STYLE) & WS_VISIBLE) != 0;
  const bool show = command != SW_HIDE;
  if (show == was_visible) return was_visible;
  const DWORD me = GetCurrentThreadId();
  const WINDOWPOS position = {
      hwnd, nullptr, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE | SWP_NOZORDER | (show ? SWP_SHOWWINDOW : SWP_HIDEWINDOW)};
  run_on_owner(owner_of(hwnd), hwnd, "ShowWindow", true, [=] {
    give(me, hwnd, WM_SHOWWINDOW, show, 0);
    change_position(me, position);
  });
  return was_visible;
}

extern "C" BOOL GetClientRect(HWND hwnd, LPRECT out) {
  if (ordered_to_fail("GetClientRect")) return FALSE;
  const std::lock_guard guard(window_lock);
  const window_record* window = find_window(hwnd);
  if (window == nullptr) return FALSE;
  const RECT client = client_rect(*window);
  *out = {0, 0, client.right - client.left, client.bottom - client.top};
  return TRUE;
}

extern "C" BOOL GetWindowRect(HWND hwnd, LPRECT out) {
  if (ordered_to_fail("GetWindowRect")) return FALSE;
  const std::lock_guard guard(window_lock);
  const window_record* window = find_window(hwnd);
  if (window == nullptr) return FALSE;
  *out = screen_rect(*window);
  return TRUE;
}

extern "C" BOOL ClientToScreen(HWND hwnd, LPPOINT point) {
  const std::lock_guard guard(window_lock);
  const window_record* window = find_window(hwnd);
  if (window == nullptr) return FALSE;
  const RECT client = client_rect(*window);
  *point = {point->x + client.left, point->y + client.top};
  return TRUE;
}

extern "C" BOOL ScreenToClient(HWND hwnd, LPPOINT point) {
  const std::lock_guard guard(window_lock);
  const window_record* window = find_window(hwnd);
  if (window == nullptr) return FALSE;
  const RECT client = client_rect(*window);
  *point = {point->x - client.left, point->y - client.top};
  return TRUE;
}
