// The windows that stand in for child windows under Wine: they show what is drawn to the child, follow it and go with
// it.
#include <cstring>
#include <initializer_list>

#include "driver.h"

namespace {

constexpr const char* stand_in_class = "osw_driver_stand_in";
constexpr DWORD limit = 20000;       // ms, for every wait
constexpr DWORD follow_time = 3000;  // ms, for what is followed after a while

constexpr COLORREF red = RGB(255, 0, 0), green = RGB(0, 255, 0), blue = RGB(0, 0, 255), ground = RGB(200, 200, 0);

HGLRC context;

struct stand_ins {
  HWND hwnd[64];
  int count;
};

BOOL CALLBACK collect(HWND hwnd, LPARAM into) {
  auto* found = reinterpret_cast<stand_ins*>(into);
  char name[64] = "";
  DWORD process = 0;
  GetWindowThreadProcessId(hwnd, &process);
  GetClassNameA(hwnd, name, sizeof name);
  if (process == GetCurrentProcessId() && strcmp(name, stand_in_class) == 0 && found->count < 64) {
    found->hwnd[found->count++] = hwnd;
  }
  return TRUE;
}

// In the order of the screen, the topmost first.
stand_ins all_stand_ins() {
  stand_ins found = {};
  EnumWindows(collect, reinterpret_cast<LPARAM>(&found));
  return found;
}

int stand_in_count() {
  return all_stand_ins().count;
}

// The one that is there.
HWND the_stand_in() {
  const stand_ins found = all_stand_ins();
  CHECK_EQUAL(found.count, 1);
  return found.hwnd[0];
}

RECT place_of(HWND hwnd) {
  RECT place = {};
  GetWindowRect(hwnd, &place);
  return place;
}

bool is_at(HWND hwnd, int left, int top, int width, int height) {
  const RECT place = place_of(hwnd);
  return place.left == left && place.top == top && place.right - place.left == width &&
         place.bottom - place.top == height;
}

void check_at(int line, HWND hwnd, int left, int top, int width, int height) {
  const RECT place = place_of(hwnd);
  check_equal(__FILE__, line, "left", place.left, left);
  check_equal(__FILE__, line, "top", place.top, top);
  check_equal(__FILE__, line, "width", place.right - place.left, width);
  check_equal(__FILE__, line, "height", place.bottom - place.top, height);
}

#define CHECK_AT(...) check_at(__LINE__, __VA_ARGS__)

// Waits, with messages, until a condition holds.
template <class Condition>
bool comes_true(Condition condition) {
  const DWORD start = GetTickCount();
  while (!condition()) {
    if (GetTickCount() - start > follow_time) return false;
    pump(10);
  }
  return true;
}

COLORREF on_screen(int x, int y) {
  HDC screen = GetDC(nullptr);
  const COLORREF color = GetPixel(screen, x, y);
  ReleaseDC(nullptr, screen);
  return color;
}

#define CHECK_SHOWN(x, y, color)                                            \
  do {                                                                      \
    comes_true([=] { return on_screen(x, y) == (color); });                 \
    check_equal(__FILE__, __LINE__, "on_screen", on_screen(x, y), (color)); \
  } while (false)

int top_paints;

LRESULT CALLBACK top_procedure(HWND hwnd, UINT message, WPARAM first, LPARAM second) {
  if (message == WM_PAINT) ++top_paints;
  if (message == WM_ERASEBKGND) {
    RECT client;
    GetClientRect(hwnd, &client);
    HBRUSH brush = CreateSolidBrush(ground);
    FillRect(reinterpret_cast<HDC>(first), &client, brush);
    DeleteObject(brush);
    return 1;
  }
  return DefWindowProcA(hwnd, message, first, second);
}

// A top window with the corner of its client area at (left, top), with a frame and a menu or without.
HWND make_top(int left, int top, int width, int height, bool framed) {
  WNDCLASSA plain = {};
  plain.lpfnWndProc = top_procedure;
  plain.hInstance = GetModuleHandleA(nullptr);
  plain.lpszClassName = "driver_test_top";
  RegisterClassA(&plain);
  HMENU menu = nullptr;
  const DWORD style = (framed ? WS_OVERLAPPEDWINDOW : WS_POPUP) | WS_CLIPCHILDREN;
  RECT outer = {left, top, left + width, top + height};
  if (framed) {
    menu = CreateMenu();
    AppendMenuA(menu, MF_STRING, 1, "File");
    AdjustWindowRectEx(&outer, style, TRUE, 0);
  }
  HWND hwnd =
      CreateWindowExA(0, "driver_test_top", "", style | WS_VISIBLE, outer.left, outer.top, outer.right - outer.left,
                      outer.bottom - outer.top, nullptr, menu, GetModuleHandleA(nullptr), nullptr);
  pump(100);
  return hwnd;
}

void draw(HDC hdc, COLORREF color) {
  CHECK(driver.wglMakeCurrent(hdc, context));
  driver.glDisable(GL_SCISSOR_TEST);
  driver.glClearColor(GetRValue(color) / 255.0f, GetGValue(color) / 255.0f, GetBValue(color) / 255.0f, 1);
  driver.glClear(GL_COLOR_BUFFER_BIT);
  CHECK(driver.wglSwapBuffers(hdc));
}

// As programs do: what was uncovered is drawn again.
LRESULT CALLBACK painting_procedure(HWND hwnd, UINT message, WPARAM first, LPARAM second) {
  const auto previous = reinterpret_cast<WNDPROC>(GetPropA(hwnd, "previous"));
  if (message == WM_PAINT && GetPropA(hwnd, "color") != nullptr) {
    ValidateRect(hwnd, nullptr);
    HDC hdc = GetDC(hwnd);
    draw(hdc, static_cast<COLORREF>(reinterpret_cast<UINT_PTR>(GetPropA(hwnd, "color")) - 1));
    ReleaseDC(hwnd, hdc);
    return 0;
  }
  return CallWindowProcA(previous, hwnd, message, first, second);
}

void paint(const gl_window& window, COLORREF color) {
  if (GetPropA(window.hwnd, "previous") == nullptr) {
    const LONG_PTR previous =
        SetWindowLongPtrA(window.hwnd, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(painting_procedure));
    SetPropA(window.hwnd, "previous", reinterpret_cast<HANDLE>(previous));
  }
  SetPropA(window.hwnd, "color", reinterpret_cast<HANDLE>(static_cast<UINT_PTR>(color) + 1));
  draw(window.hdc, color);
}

void make_context() {
  gl_window window = make_window(nullptr, 700, 20, 50, 50, false);
  CHECK_EQUAL(stand_in_count(), 0);
  context = driver.wglCreateContext(window.hdc);
  CHECK(driver.wglMakeCurrent(window.hdc, context));
  bind_extensions();
  destroy_window(window);
}

// A top window needs none.
void top_window() {
  gl_window window = make_window(nullptr, 100, 100, 80, 60, true);
  CHECK_EQUAL(stand_in_count(), 0);
  paint(window, green);
  CHECK_SHOWN(140, 130, green);
  CHECK_EQUAL(stand_in_count(), 0);
  destroy_window(window);
}

void shown_child() {
  HWND top = make_top(100, 100, 300, 200, false);
  gl_window child = make_window(top, 20, 30, 100, 80, true);
  HWND stand_in = the_stand_in();
  CHECK_AT(stand_in, 120, 130, 100, 80);
  CHECK(IsWindowVisible(stand_in));
  CHECK(GetWindow(stand_in, GW_OWNER) == top);
  paint(child, red);
  CHECK_SHOWN(121, 131, red);
  CHECK_SHOWN(218, 208, red);
  CHECK_SHOWN(118, 170, ground);
  CHECK_SHOWN(222, 170, ground);
  CHECK_SHOWN(170, 128, ground);
  CHECK_SHOWN(170, 212, ground);
  // The same format again makes no second one.
  PIXELFORMATDESCRIPTOR descriptor = {};
  CHECK(driver.wglSetPixelFormat(child.hdc, driver.wglGetPixelFormat(child.hdc), &descriptor));
  CHECK_EQUAL(stand_in_count(), 1);
  destroy_window(child);
  CHECK_EQUAL(stand_in_count(), 0);
  CHECK_SHOWN(170, 170, ground);
  DestroyWindow(top);
}

// A change of the child is followed before the call that made it returns, and so is its size by what is drawn.
void moved_and_resized() {
  HWND top = make_top(100, 100, 300, 200, false);
  gl_window child = make_window(top, 20, 30, 100, 80, true);
  HWND stand_in = the_stand_in();
  paint(child, red);
  SetWindowPos(child.hwnd, nullptr, 60, 70, 0, 0, SWP_NOSIZE | SWP_NOZORDER);
  CHECK_AT(stand_in, 160, 170, 100, 80);
  paint(child, green);
  CHECK_SHOWN(162, 172, green);
  CHECK_SHOWN(130, 140, ground);
  SetWindowPos(child.hwnd, nullptr, 10, 10, 250, 150, SWP_NOZORDER);
  CHECK_AT(stand_in, 110, 110, 250, 150);
  paint(child, blue);
  u32 corner = 0;
  driver.glReadPixels(249, 149, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, &corner);
  CHECK_SHOWN(112, 112, blue);
  CHECK_SHOWN(358, 258, blue);
  SetWindowPos(child.hwnd, nullptr, 10, 10, 30, 20, SWP_NOZORDER);
  CHECK_AT(stand_in, 110, 110, 30, 20);
  paint(child, red);
  CHECK_SHOWN(112, 112, red);
  CHECK_SHOWN(145, 120, ground);
  destroy_window(child);
  DestroyWindow(top);
}

void moved_top() {
  HWND top = make_top(100, 200, 300, 200, true);
  gl_window child = make_window(top, 20, 30, 100, 80, true);
  HWND stand_in = the_stand_in();
  CHECK_AT(stand_in, 120, 230, 100, 80);
  paint(child, red);
  CHECK_SHOWN(122, 232, red);
  const RECT before = place_of(top);
  SetWindowPos(top, nullptr, before.left + 200, before.top + 50, 0, 0, SWP_NOSIZE | SWP_NOZORDER);
  CHECK(comes_true([=] { return is_at(stand_in, 320, 280, 100, 80); }));
  paint(child, green);
  CHECK_SHOWN(322, 282, green);
  CHECK_SHOWN(418, 358, green);
  destroy_window(child);
  DestroyWindow(top);
}

void hidden_and_minimized() {
  HWND top = make_top(100, 200, 300, 200, true);
  gl_window child = make_window(top, 20, 30, 100, 80, true);
  HWND stand_in = the_stand_in();
  paint(child, red);
  ShowWindow(child.hwnd, SW_HIDE);
  CHECK(!IsWindowVisible(stand_in));
  CHECK_SHOWN(150, 260, ground);
  // Still drawn to, in its own size.
  paint(child, blue);
  driver.glClear(GL_COLOR_BUFFER_BIT);
  u32 found = 0;
  driver.glReadPixels(99, 79, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, &found);
  CHECK_EQUAL(found & 0xffffff, 0xff0000);
  ShowWindow(child.hwnd, SW_SHOW);
  CHECK(IsWindowVisible(stand_in));
  paint(child, green);
  CHECK_SHOWN(150, 260, green);
  ShowWindow(top, SW_MINIMIZE);
  CHECK(comes_true([=] { return !IsWindowVisible(stand_in); }));
  ShowWindow(top, SW_RESTORE);
  CHECK(comes_true([=] { return IsWindowVisible(stand_in) && is_at(stand_in, 120, 230, 100, 80); }));
  paint(child, red);
  CHECK_SHOWN(150, 260, red);
  ShowWindow(top, SW_HIDE);
  CHECK(comes_true([=] { return !IsWindowVisible(stand_in); }));
  ShowWindow(top, SW_SHOW);
  CHECK(comes_true([=] { return IsWindowVisible(stand_in) != 0; }));
  destroy_window(child);
  DestroyWindow(top);
}

void empty_and_grown() {
  HWND top = make_top(100, 100, 300, 200, false);
  gl_window child = make_window(top, 50, 50, 0, 0, true);
  HWND stand_in = the_stand_in();
  CHECK(!IsWindowVisible(stand_in));
  paint(child, red);
  CHECK_SHOWN(150, 150, ground);
  SetWindowPos(child.hwnd, nullptr, 50, 50, 60, 40, SWP_NOZORDER);
  CHECK(IsWindowVisible(stand_in));
  CHECK_AT(stand_in, 150, 150, 60, 40);
  paint(child, red);
  CHECK_SHOWN(152, 152, red);
  CHECK_SHOWN(208, 188, red);
  SetWindowPos(child.hwnd, nullptr, 50, 50, 0, 0, SWP_NOZORDER);
  CHECK(!IsWindowVisible(stand_in));
  paint(child, red);
  CHECK_SHOWN(152, 152, ground);
  destroy_window(child);
  DestroyWindow(top);
}

// A child reaches no further than its parents' client areas.
void clipped() {
  HWND top = make_top(100, 100, 200, 100, false);
  HWND panel = CreateWindowExA(0, "static", "", WS_CHILD | WS_VISIBLE, 20, 10, 100, 50, top, nullptr, nullptr, nullptr);
  gl_window child = make_window(panel, -10, -5, 300, 200, true);
  HWND stand_in = the_stand_in();
  CHECK_AT(stand_in, 110, 105, 300, 200);
  paint(child, green);
  CHECK_SHOWN(122, 112, green);
  CHECK_SHOWN(218, 158, green);
  CHECK_SHOWN(116, 130, ground);
  CHECK_SHOWN(230, 130, ground);
  CHECK_SHOWN(170, 170, ground);
  CHECK(on_screen(350, 250) != green);
  SetWindowPos(child.hwnd, nullptr, 10, 5, 40, 20, SWP_NOZORDER);
  RECT region;
  CHECK_EQUAL(GetWindowRgnBox(stand_in, &region), ERROR);
  SetWindowPos(child.hwnd, nullptr, 500, 5, 40, 20, SWP_NOZORDER);
  CHECK(!IsWindowVisible(stand_in));
  destroy_window(child);
  DestroyWindow(top);
}

int position_in(const stand_ins& order, HWND hwnd) {
  for (int i = 0; i < order.count; ++i) {
    if (order.hwnd[i] == hwnd) return i;
  }
  return -1;
}

bool is_above(HWND upper, HWND lower) {
  for (HWND at = lower; (at = GetWindow(at, GW_HWNDPREV)) != nullptr;) {
    if (at == upper) return true;
  }
  return false;
}

// The stand-ins lie between the frame and its dialog, the one for the parts' parent lowest.
bool is_in_order(HWND top, HWND under, HWND dialog) {
  const stand_ins order = all_stand_ins();
  bool good = order.count == 3 && position_in(order, under) == 2;
  for (int i = 0; i < order.count; ++i) good &= is_above(order.hwnd[i], top) && is_above(dialog, order.hwnd[i]);
  return good;
}

// The application's own window is a child of a frame, and the parts are children of that.
void nested() {
  HWND top = make_top(100, 200, 300, 200, true);
  gl_window view = make_window(top, 10, 10, 200, 100, true);
  HWND under = the_stand_in();
  HWND dialog =
      CreateWindowExA(0, "static", "", WS_POPUP | WS_VISIBLE, 150, 250, 40, 30, top, nullptr, nullptr, nullptr);
  pump(100);
  const COLORREF on_dialog = on_screen(155, 255);
  CHECK(on_dialog != red && on_dialog != blue);
  gl_window left = make_window(view.hwnd, 0, 0, 100, 100, true), right = make_window(view.hwnd, 100, 0, 100, 100, true);
  CHECK(comes_true([=] { return is_in_order(top, under, dialog); }));
  paint(view, blue);
  paint(left, red);
  paint(right, green);
  CHECK_SHOWN(112, 212, red);
  CHECK_SHOWN(208, 308, red);
  CHECK_SHOWN(212, 212, green);
  CHECK_SHOWN(308, 308, green);
  CHECK_SHOWN(155, 255, on_dialog);
  // What brings one of them up alone does not last.
  SetWindowPos(under, HWND_TOP, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE);
  CHECK(comes_true([=] { return is_in_order(top, under, dialog); }));
  CHECK_SHOWN(112, 212, red);
  CHECK_SHOWN(155, 255, on_dialog);
  // The frame comes to the front with all of them, and none comes above the dialog.
  HWND other = make_top(120, 220, 50, 50, false);
  SetWindowPos(other, HWND_TOP, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE);
  CHECK_SHOWN(130, 230, ground);
  // Wine brings a window to the front again when the X server tells it, late, that it was uncovered.
  CHECK(comes_true([=] {
    if (!is_above(top, other)) SetWindowPos(top, HWND_TOP, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE);
    return is_above(top, other) && is_in_order(top, under, dialog);
  }));
  DestroyWindow(other);
  DestroyWindow(dialog);
  // The top window alone is destroyed, and everything goes.
  ReleaseDC(view.hwnd, view.hdc);
  DestroyWindow(top);
  CHECK(comes_true([] { return stand_in_count() == 0; }));
}

// What lay under another window and is uncovered is drawn again, by the child or by the window that a disabled one is
// in.
void uncovered() {
  HWND top = make_top(100, 100, 200, 150, false);
  gl_window child = make_window(top, 10, 10, 100, 80, true);
  paint(child, green);
  CHECK_SHOWN(150, 150, green);
  HWND cover = make_top(120, 120, 60, 50, false);
  CHECK_SHOWN(150, 150, ground);
  DestroyWindow(cover);
  CHECK_SHOWN(150, 150, green);
  SetWindowLongPtrA(child.hwnd, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(GetPropA(child.hwnd, "previous")));
  EnableWindow(child.hwnd, FALSE);
  pump(100);
  top_paints = 0;
  cover = make_top(120, 120, 60, 50, false);
  pump(100);
  DestroyWindow(cover);
  CHECK(comes_true([] { return top_paints > 0; }));
  destroy_window(child);
  DestroyWindow(top);
}

// The top window is shown after its children got their pixel formats, as many programs do; and it comes to the front
// again after another window has covered it.
void shown_late_and_covered() {
  HWND top = make_top(100, 100, 200, 200, false);
  ShowWindow(top, SW_HIDE);
  constexpr COLORREF colors[4] = {red, green, blue, RGB(255, 255, 255)};
  gl_window parts[4];
  for (int i = 0; i < 4; ++i) parts[i] = make_window(top, i % 2 * 100, i / 2 * 100, 100, 100, true);
  pump(100);
  ShowWindow(top, SW_SHOW);
  CHECK(comes_true([] {
    const stand_ins all = all_stand_ins();
    int visible = 0;
    for (int i = 0; i < all.count; ++i) visible += IsWindowVisible(all.hwnd[i]) != 0;
    return visible == 4;
  }));
  for (int i = 0; i < 4; ++i) paint(parts[i], colors[i]);
  const auto check_all = [&colors] {
    for (int i = 0; i < 4; ++i) CHECK_SHOWN(150 + i % 2 * 100, 150 + i / 2 * 100, colors[i]);
  };
  check_all();
  // What is shown is brought to the front after a look or two, and must not meet the other window on its way there.
  pump(200);
  HWND cover = make_top(120, 120, 160, 160, false);
  for (int i = 0; i < 4; ++i) CHECK_SHOWN(150 + i % 2 * 100, 150 + i / 2 * 100, ground);
  SetWindowPos(top, HWND_TOP, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE);
  check_all();
  DestroyWindow(cover);
  for (const gl_window& part : parts) destroy_window(part);
  DestroyWindow(top);
}

// The mouse is the application's, not the stand-in's.
void mouse() {
  HWND top = make_top(100, 100, 300, 200, false);
  gl_window child = make_window(top, 20, 30, 100, 80, true);
  paint(child, red);
  CHECK(WindowFromPoint({170, 170}) == child.hwnd);
  EnableWindow(child.hwnd, FALSE);
  CHECK(WindowFromPoint({170, 170}) != the_stand_in());
  CHECK(GetForegroundWindow() != the_stand_in());
  destroy_window(child);
  DestroyWindow(top);
}

void reparented() {
  HWND first = make_top(100, 100, 150, 150, false), second = make_top(400, 100, 150, 150, false);
  gl_window child = make_window(first, 20, 30, 60, 50, true);
  HWND stand_in = the_stand_in();
  SetParent(child.hwnd, second);
  CHECK(comes_true([=] { return is_at(stand_in, 420, 130, 60, 50) && GetWindow(stand_in, GW_OWNER) == second; }));
  paint(child, red);
  CHECK_SHOWN(425, 135, red);
  CHECK_SHOWN(125, 135, ground);
  destroy_window(child);
  CHECK_EQUAL(stand_in_count(), 0);
  DestroyWindow(first);
  DestroyWindow(second);
}

struct painter {
  gl_window window;
  HGLRC context;
  HANDLE thread;
  COLORREF color;
  volatile LONG frames;
  volatile LONG stop;
  HWND moved;  // moved by this thread too, if not null
};

int left_in_parent(HWND child) {
  RECT place = place_of(child);
  MapWindowPoints(nullptr, GetParent(child), reinterpret_cast<POINT*>(&place), 2);
  return place.left;
}

// Asks for a move now and then, when the last is done: a thread that is asked for more than it can do does nothing
// else.
DWORD WINAPI paint_on(void* argument) {
  auto* p = static_cast<painter*>(argument);
  int asked = 0;
  CHECK(driver.wglMakeCurrent(p->window.hdc, p->context));
  driver.glClearColor(GetRValue(p->color) / 255.0f, GetGValue(p->color) / 255.0f, GetBValue(p->color) / 255.0f, 1);
  while (!p->stop) {
    driver.glClear(GL_COLOR_BUFFER_BIT);
    CHECK(driver.wglSwapBuffers(p->window.hdc));
    InterlockedIncrement(&p->frames);
    if (HWND moved = p->frames % 8 == 0 ? p->moved : nullptr; moved != nullptr && left_in_parent(moved) == asked) {
      asked = p->frames / 8 % 20;
      SetWindowPos(moved, nullptr, asked, 0, 0, 0, SWP_NOSIZE | SWP_NOZORDER | SWP_ASYNCWINDOWPOS);
    }
    Sleep(2);
  }
  driver.wglMakeCurrent(nullptr, nullptr);
  return 0;
}

// Four threads draw while the window's thread moves and resizes, and one of them moves a child of that thread.
void drawn_by_workers() {
  HWND top = make_top(100, 200, 200, 200, true);
  constexpr COLORREF colors[4] = {red, green, blue, RGB(255, 255, 255)};
  static painter painters[4];
  for (int i = 0; i < 4; ++i) {
    painters[i] = {
        make_window(top, i % 2 * 100, i / 2 * 100, 100, 100, true), nullptr, nullptr, colors[i], 0, 0, nullptr};
    painters[i].context = driver.wglCreateContext(painters[i].window.hdc);
    if (i == 3) painters[i].moved = painters[0].window.hwnd;
  }
  CHECK_EQUAL(stand_in_count(), 4);
  for (painter& p : painters) p.thread = CreateThread(nullptr, 0, paint_on, &p, 0, nullptr);
  const RECT before = place_of(top);
  for (int step = 0; step < 40; ++step) {
    SetWindowPos(top, nullptr, before.left + step * 3, before.top + step, 0, 0, SWP_NOSIZE | SWP_NOZORDER);
    SetWindowPos(painters[1].window.hwnd, nullptr, 100, 0, 60 + step, 50 + step, SWP_NOZORDER);
    pump(15);
  }
  painters[3].moved = nullptr;
  pump(100);
  SetWindowPos(top, nullptr, before.left, before.top, 0, 0, SWP_NOSIZE | SWP_NOZORDER);
  SetWindowPos(painters[0].window.hwnd, nullptr, 0, 0, 100, 100, SWP_NOZORDER);
  SetWindowPos(painters[1].window.hwnd, nullptr, 100, 0, 100, 100, SWP_NOZORDER);
  pump(200);
  for (painter& p : painters) {
    const LONG drawn = p.frames;
    CHECK(comes_true([&] { return p.frames > drawn + 2; }));
  }
  // Wine can lock up when the screen is read while other threads draw.
  for (painter& p : painters) {
    CHECK(p.frames > 10);
    InterlockedExchange(&p.stop, 1);
    CHECK_EQUAL(WaitForSingleObject(p.thread, limit), WAIT_OBJECT_0);
    CloseHandle(p.thread);
  }
  for (int i = 0; i < 4; ++i) {
    const int left = 100 + i % 2 * 100, upper = 200 + i / 2 * 100;
    CHECK_SHOWN(left + 2, upper + 2, colors[i]);
    CHECK_SHOWN(left + 97, upper + 97, colors[i]);
    CHECK(driver.wglDeleteContext(painters[i].context));
  }
  DestroyWindow(top);
  CHECK(comes_true([] { return stand_in_count() == 0; }));
}

// The window goes while a thread draws to it: the thread lives on, and can draw to another.
void destroyed_while_drawn() {
  HWND top = make_top(100, 100, 200, 200, false);
  static painter p;
  p = {make_window(top, 10, 10, 80, 80, true), nullptr, nullptr, red, 0, 0, nullptr};
  p.context = driver.wglCreateContext(p.window.hdc);
  p.thread = CreateThread(
      nullptr, 0,
      [](void*) -> DWORD {
        CHECK(driver.wglMakeCurrent(p.window.hdc, p.context));
        while (!p.stop) {
          driver.glClear(GL_COLOR_BUFFER_BIT);
          driver.wglSwapBuffers(p.window.hdc);
          InterlockedIncrement(&p.frames);
        }
        driver.wglMakeCurrent(nullptr, nullptr);
        return 0;
      },
      nullptr, 0, nullptr);
  CHECK(comes_true([] { return p.frames > 5; }));
  DestroyWindow(top);
  CHECK_EQUAL(stand_in_count(), 0);
  const LONG frames = p.frames;
  CHECK(comes_true([=] { return p.frames > frames + 5; }));
  InterlockedExchange(&p.stop, 1);
  CHECK_EQUAL(WaitForSingleObject(p.thread, limit), WAIT_OBJECT_0);
  CloseHandle(p.thread);
  top = make_top(100, 100, 200, 200, false);
  gl_window next = make_window(top, 10, 10, 80, 80, true);
  CHECK(driver.wglMakeCurrent(next.hdc, p.context));
  driver.glClearColor(0, 0, 1, 1);
  driver.glClear(GL_COLOR_BUFFER_BIT);
  CHECK(driver.wglSwapBuffers(next.hdc));
  CHECK_SHOWN(150, 150, blue);
  CHECK(driver.wglMakeCurrent(nullptr, nullptr));
  CHECK(driver.wglDeleteContext(p.context));
  destroy_window(next);
  DestroyWindow(top);
}

// A spared context's window of one pixel goes with it too.
void no_leak() {
  HWND top = make_top(100, 100, 200, 200, false);
  for (int round = 0; round < 40; ++round) {
    gl_window child = make_window(top, 10, 10, 80, 80, round % 2 != 0);
    HGLRC made = driver.wglCreateContext(child.hdc);
    CHECK(driver.wglMakeCurrent(child.hdc, made));
    driver.glDrawableSizeZ4(-1, -1);
    driver.glClear(GL_COLOR_BUFFER_BIT);
    CHECK(driver.wglMakeCurrent(nullptr, nullptr));
    CHECK(driver.wglDeleteContext(made));
    destroy_window(child);
    CHECK_EQUAL(stand_in_count(), 0);
  }
  DestroyWindow(top);
  int windows = 0;
  EnumWindows(
      [](HWND hwnd, LPARAM count) -> BOOL {
        DWORD process = 0;
        GetWindowThreadProcessId(hwnd, &process);
        char name[64] = "";
        GetClassNameA(hwnd, name, sizeof name);
        if (process == GetCurrentProcessId() && strncmp(name, "osw_driver", 10) == 0) ++*reinterpret_cast<int*>(count);
        return TRUE;
      },
      reinterpret_cast<LPARAM>(&windows));
  CHECK_EQUAL(windows, 0);
}

const test_case cases[] = {
    {"context", make_context},
    {"top-window", top_window},
    {"shown-child", shown_child},
    {"moved-and-resized", moved_and_resized},
    {"moved-top", moved_top},
    {"hidden-and-minimized", hidden_and_minimized},
    {"empty-and-grown", empty_and_grown},
    {"clipped", clipped},
    {"nested", nested},
    {"uncovered", uncovered},
    {"shown-late-and-covered", shown_late_and_covered},
    {"mouse", mouse},
    {"reparented", reparented},
    {"drawn-by-workers", drawn_by_workers},
    {"destroyed-while-drawn", destroyed_while_drawn},
    {"no-leak", no_leak},
};

}  // namespace

int main(int argc, char** argv) {
  load_driver();
  return run_cases(cases, sizeof cases / sizeof *cases, argc, argv, 60);
}
