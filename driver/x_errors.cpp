#include "x_errors.h"

#include <atomic>

#include "host.h"
#include "passing_context.h"
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

}  // namespace

void prepare_to_await_errors(HDC hdc, int pixel_format) {
  static bool tried;
  if (tried) return;
  tried = true;
  // The host tells of an extension only under a context.
  asked = under_passing_context(hdc, [=] { return make_pbuffer(hdc, pixel_format); });
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
