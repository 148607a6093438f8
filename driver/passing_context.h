// A context of the driver's own, for what the host does only under one and no application's may show.
#pragma once

#include <windows.h>

#include "host.h"

// Calls `work` with a new context of the host current, which is deleted behind it. Returns what `work` does, or a value
// of nothing without a context. On a thread without a context, with a device context that has a pixel format.
template <class Work>
auto under_passing_context(HDC hdc, Work work) -> decltype(work()) {
  HGLRC hglrc = host_wgl_entry<wglCreateContext_op>()(hdc);
  if (!hglrc) return {};
  decltype(work()) result{};
  if (host_wgl_entry<wglMakeCurrent_op>()(hdc, hglrc)) {
    result = work();
    host_wgl_entry<wglMakeCurrent_op>()(nullptr, nullptr);
  }
  host_wgl_entry<wglDeleteContext_op>()(hglrc);
  return result;
}
