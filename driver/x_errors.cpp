#include "x_errors.h"

#include <atomic>

#include "host.h"
#include "report.h"

namespace {

constexpr int pbuffer_width = 0x2034;  // WGL_PBUFFER_WIDTH_ARB

std::atomic<HPBUFFERARB> asked;

HPBUFFERARB make_pbuffer(HDC hdc, int pixel_format) {
  if (!find_host_wgl(wglCreatePbufferARB_op::op, wglCreatePbufferARB_op::name) ||
      !find_host_wgl(wglQueryPbufferARB_op::op, wglQueryPbufferARB_op::name))
    return nullptr;
  const int no_attributes[] = {0};
  return host_wgl_entry<wglCreatePbufferARB_op>()(hdc, pixel_format, 1, 1, no_attributes);
}

// The host tells of an extension only under a context.
HPBUFFERARB make_pbuffer_under_context(HDC hdc, int pixel_format) {
  HGLRC hglrc = host_wgl_entry<wglCreateContext_op>()(hdc);
  if (!hglrc) return nullptr;
  HPBUFFERARB pbuffer = nullptr;
  if (host_wgl_entry<wglMakeCurrent_op>()(hdc, hglrc)) {
    pbuffer = make_pbuffer(hdc, pixel_format);
    host_wgl_entry<wglMakeCurrent_op>()(nullptr, nullptr);
  }
  host_wgl_entry<wglDeleteContext_op>()(hglrc);
  return pbuffer;
}

}  // namespace

void prepare_to_await_errors(HDC hdc, int pixel_format) {
  static bool tried;
  if (tried) return;
  tried = true;
  asked = make_pbuffer_under_context(hdc, pixel_format);
  if (!asked) report("no pbuffer of pixel format %d to await the X server with", pixel_format);
}

// A pbuffer's size stands in an answer of the server's, and that comes after all answers to what it was asked before.
// To read the screen would do as well, but for the lock: a part's thread that finds an error meanwhile would wait for
// it.
void await_errors() {
  HPBUFFERARB pbuffer = asked;
  int unused = 0;
  if (pbuffer) host_wgl_entry<wglQueryPbufferARB_op>()(pbuffer, pbuffer_width, &unused);
}
