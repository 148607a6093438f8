#include "spare_window.h"

#include "host.h"
#include "report.h"
#include "window_thread.h"

namespace {

constexpr char spare_class[] = "osw_driver_spare";

void make_spare_on_window_thread(void* argument) {
  register_window_class(spare_class, DefWindowProcA);
  auto* c = static_cast<context*>(argument);
  HWND hwnd = CreateWindowExA(WS_EX_NOACTIVATE | WS_EX_TOOLWINDOW, spare_class, "", WS_POPUP | WS_DISABLED, 0, 0, 1, 1,
                              nullptr, nullptr, nullptr, nullptr);
  if (!hwnd) return;
  HDC hdc = GetDC(hwnd);
  PIXELFORMATDESCRIPTOR descriptor{};
  host_wgl_entry<wglDescribePixelFormat_op>()(hdc, c->pixel_format, sizeof descriptor, &descriptor);
  if (host_wgl_entry<wglSetPixelFormat_op>()(hdc, c->pixel_format, &descriptor)) {
    c->spare_window = hwnd;
    c->spare_hdc = hdc;
  } else {
    DestroyWindow(hwnd);
  }
}

void destroy_spare_on_window_thread(void* hwnd) {
  DestroyWindow(static_cast<HWND>(hwnd));
}

}  // namespace

HDC spare_hdc(context* c) {
  if (c->spare_window || c->spare_failed) return c->spare_hdc;
  on_window_thread(make_spare_on_window_thread, c);
  c->spare_failed = !c->spare_window;
  if (c->spare_failed) report("no spare drawable of pixel format %d could be made", c->pixel_format);
  return c->spare_hdc;
}

void destroy_spare_window(context* c) {
  if (c->spare_window) on_window_thread(destroy_spare_on_window_thread, c->spare_window);
  c->spare_window = nullptr;
  c->spare_hdc = nullptr;
}
