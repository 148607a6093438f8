#include "driver.h"

HMODULE driver_module;
driver_entries driver;

namespace {

constexpr const char* class_name = "driver_test_window";

// The entries of the lists, as the structure has them: the GL ops first, each in op order.
__osw_proc* entry_slots() {
  static_assert(offsetof(driver_entries, switch_count) == sizeof(__osw_proc) * (gl_op_count + wgl_op_count));
  return reinterpret_cast<__osw_proc*>(&driver);
}

template <class Find>
void fill_all(Find find) {
  __osw_proc* slot = entry_slots();
  const auto fill = [&]<class Op>() {
    if (!*slot) *slot = find(Op::name);
    ++slot;
  };
  for_each_gl_op(fill);
  for_each_wgl_op(fill);
}

void register_class() {
  WNDCLASSA plain = {};
  plain.style = CS_OWNDC;
  plain.lpfnWndProc = DefWindowProcA;
  plain.hInstance = GetModuleHandleA(nullptr);
  plain.lpszClassName = class_name;
  RegisterClassA(&plain);
}

PIXELFORMATDESCRIPTOR wanted_format() {
  PIXELFORMATDESCRIPTOR wanted = {};
  wanted.nSize = sizeof wanted;
  wanted.nVersion = 1;
  wanted.dwFlags = PFD_DRAW_TO_WINDOW | PFD_SUPPORT_OPENGL | PFD_DOUBLEBUFFER;
  wanted.iPixelType = PFD_TYPE_RGBA;
  wanted.cColorBits = 24;
  wanted.cDepthBits = 24;
  wanted.cStencilBits = 8;
  return wanted;
}

}  // namespace

void load_driver(const char* file) {
  driver_module = LoadLibraryA(file);
  if (driver_module == nullptr) {
    printf("%s cannot be loaded, error %lu\n", file, GetLastError());
    exit(1);
  }
  fill_all([](const char* name) { return reinterpret_cast<__osw_proc>(GetProcAddress(driver_module, name)); });
  driver.switch_count = reinterpret_cast<decltype(driver.switch_count)>(
      reinterpret_cast<__osw_proc>(GetProcAddress(driver_module, "OswDriverSwitchCount")));
}

void bind_extensions() {
  fill_all([](const char* name) { return reinterpret_cast<__osw_proc>(driver.wglGetProcAddress(name)); });
}

gl_window make_window(HWND parent, int left, int top, int width, int height, bool shown) {
  register_class();
  const DWORD style = (parent == nullptr ? WS_POPUP : WS_CHILD | WS_CLIPSIBLINGS) | WS_CLIPCHILDREN;
  gl_window window = {};
  window.hwnd = CreateWindowExA(0, class_name, "", shown ? style | WS_VISIBLE : style, left, top, width, height, parent,
                                nullptr, GetModuleHandleA(nullptr), nullptr);
  window.hdc = GetDC(window.hwnd);
  const PIXELFORMATDESCRIPTOR wanted = wanted_format();
  const int format = driver.wglChoosePixelFormat(window.hdc, &wanted);
  CHECK(format != 0);
  CHECK(driver.wglSetPixelFormat(window.hdc, format, &wanted));
  return window;
}

void destroy_window(const gl_window& window) {
  ReleaseDC(window.hwnd, window.hdc);
  DestroyWindow(window.hwnd);
}

void make_part_context(const gl_window& window) {
  WNDCLASSA hidden = {};
  hidden.lpfnWndProc = DefWindowProcA;
  hidden.lpszClassName = "__osw_glrc_window";
  RegisterClassA(&hidden);
  HWND hwnd = CreateWindowExA(0, hidden.lpszClassName, "", WS_POPUP, 0, 0, 1, 1, nullptr, nullptr, nullptr, nullptr);
  HDC hdc = GetDC(hwnd);
  PIXELFORMATDESCRIPTOR format = {};
  const int number = driver.wglGetPixelFormat(window.hdc);
  driver.wglDescribePixelFormat(window.hdc, number, sizeof format, &format);
  CHECK(driver.wglSetPixelFormat(hdc, number, &format));
  HGLRC part = driver.wglCreateContext(hdc);
  CHECK(part != nullptr);
  CHECK(driver.wglDeleteContext(part));
  ReleaseDC(hwnd, hdc);
  DestroyWindow(hwnd);
}

void pump(DWORD milliseconds) {
  const DWORD start = GetTickCount();
  do {
    MSG message;
    while (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE)) DispatchMessageA(&message);
    MsgWaitForMultipleObjects(0, nullptr, FALSE, 5, QS_ALLINPUT);
  } while (GetTickCount() - start < milliseconds);
}
