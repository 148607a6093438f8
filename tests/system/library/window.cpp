#include "window.h"

#include "support/check.h"

thread_local bool repaints;

namespace {

constexpr const char* gl_class = "library_test_window";
constexpr const char* frame_class = "library_test_frame";

// The window draws itself: nothing may be painted over what GL has put there.
LRESULT CALLBACK gl_procedure(HWND hwnd, UINT message, WPARAM wparam, LPARAM lparam) {
  switch (message) {
    case WM_ERASEBKGND:
      return 1;
    case WM_PAINT:
      ValidateRect(hwnd, nullptr);
      if (repaints && WindowFromDC(wglGetCurrentDC()) == hwnd) SwapBuffers(wglGetCurrentDC());
      return 0;
    default:
      return DefWindowProcA(hwnd, message, wparam, lparam);
  }
}

// Wine says of a class that another thread is just registering that it is there, and then does not find it.
void register_class(const char* name, WNDPROC procedure, UINT style, HBRUSH background) {
  static SRWLOCK lock = SRWLOCK_INIT;
  WNDCLASSA window_class = {};
  window_class.style = style;
  window_class.lpfnWndProc = procedure;
  window_class.hInstance = GetModuleHandleA(nullptr);
  window_class.hbrBackground = background;
  window_class.lpszClassName = name;
  AcquireSRWLockExclusive(&lock);
  RegisterClassA(&window_class);
  ReleaseSRWLockExclusive(&lock);
}

HWND create(const char* name, DWORD style, const place& at, HWND parent) {
  const HWND hwnd = CreateWindowExA(0, name, "", style, at.left, at.top, at.width, at.height, parent, nullptr,
                                    GetModuleHandleA(nullptr), nullptr);
  CHECK(hwnd != nullptr);
  return hwnd;
}

bool is_wanted(const PIXELFORMATDESCRIPTOR& format, window_kind kind) {
  const DWORD use = PFD_DRAW_TO_WINDOW | PFD_SUPPORT_OPENGL;
  const bool is_double = (format.dwFlags & PFD_DOUBLEBUFFER) != 0, accumulates = format.cAccumBits != 0;
  return (format.dwFlags & use) == use && format.iPixelType == PFD_TYPE_RGBA && format.cColorBits >= 24 &&
         format.cDepthBits == 24 && format.cStencilBits == 8 && is_double == (kind != single_buffered) &&
         accumulates == (kind == accumulating);
}

// ChoosePixelFormat looks at less than this. Result: 0 when there is none.
int find_format(HDC hdc, window_kind kind, PIXELFORMATDESCRIPTOR* found) {
  const int count = DescribePixelFormat(hdc, 1, sizeof *found, found);
  for (int format = 1; format <= count; ++format) {
    DescribePixelFormat(hdc, format, sizeof *found, found);
    if (is_wanted(*found, kind)) return format;
  }
  return 0;
}

}  // namespace

gl_window make_formless_window(const place& at, HWND parent) {
  register_class(gl_class, gl_procedure, CS_OWNDC, nullptr);
  const DWORD style = WS_VISIBLE | WS_CLIPCHILDREN | WS_CLIPSIBLINGS | (parent ? WS_CHILD : WS_POPUP);
  gl_window window = {create(gl_class, style, at, parent), nullptr, nullptr};
  window.hdc = GetDC(window.hwnd);
  return window;
}

gl_window make_bare_window(const place& at, HWND parent, window_kind kind) {
  const gl_window window = make_formless_window(at, parent);
  PIXELFORMATDESCRIPTOR descriptor = {};
  const int format = find_format(window.hdc, kind, &descriptor);
  CHECK(format != 0);
  CHECK(SetPixelFormat(window.hdc, format, &descriptor));
  return window;
}

gl_window make_window(const place& at, HWND parent, window_kind kind) {
  gl_window window = make_bare_window(at, parent, kind);
  window.context = wglCreateContext(window.hdc);
  CHECK(window.context != nullptr);
  make_current(window);
  return window;
}

void make_current(const gl_window& window) {
  CHECK(wglMakeCurrent(window.hdc, window.context));
}

HWND make_frame(const place& at) {
  static const HBRUSH brush = CreateHatchBrush(HS_DIAGCROSS, RGB(40, 60, 90));
  register_class(frame_class, DefWindowProcA, 0, brush);
  return create(frame_class, WS_POPUP | WS_VISIBLE | WS_CLIPCHILDREN, at, nullptr);
}

void destroy_window(const gl_window& window) {
  if (window.context) {
    if (wglGetCurrentContext() == window.context) CHECK(wglMakeCurrent(nullptr, nullptr));
    CHECK(wglDeleteContext(window.context));
  }
  ReleaseDC(window.hwnd, window.hdc);
  CHECK(DestroyWindow(window.hwnd));
}

void move_window(HWND hwnd, const place& at) {
  CHECK(SetWindowPos(hwnd, nullptr, at.left, at.top, at.width, at.height, SWP_NOZORDER | SWP_NOACTIVATE));
}

place client_place(HWND hwnd) {
  RECT client = {};
  GetClientRect(hwnd, &client);
  POINT corner = {0, 0};
  ClientToScreen(hwnd, &corner);
  return {corner.x, corner.y, client.right, client.bottom};
}

void pump(DWORD milliseconds) {
  const DWORD start = GetTickCount();
  for (;;) {
    MSG message;
    while (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE)) DispatchMessageA(&message);
    const DWORD spent = GetTickCount() - start;
    if (spent >= milliseconds) return;
    MsgWaitForMultipleObjects(0, nullptr, FALSE, milliseconds - spent, QS_ALLINPUT);
  }
}

gl_extensions find_extensions() {
  gl_extensions found;
#define ENTRY(type, name)                                                                 \
  found.name = reinterpret_cast<type>(reinterpret_cast<void*>(wglGetProcAddress(#name))); \
  if (!found.name) fail(__FILE__, __LINE__, #name, " is not there");
  EXTENSION_ENTRIES(ENTRY)
#undef ENTRY
  return found;
}
