// The wgl functions that are more than a call of the host's.
#pragma once

#include <type_traits>

#include "forward.h"
#include "stand_in.h"

// A wgl call is passed on as it stands; the thread's binding is made real first where the host looks at it. The depth
// is watched because the host may come back here through gdi32.
template <class Op, class Result, class... Arguments>
inline Result forward_wgl(Arguments... arguments);

#define OWN_WGL_ENTRY(function, result, ...) \
  template <>                                \
  result forward_wgl<function##_op, result>(__VA_ARGS__)

OWN_WGL_ENTRY(wglCopyContext, BOOL, HGLRC source, HGLRC destination, UINT mask);
OWN_WGL_ENTRY(wglCreateContext, HGLRC, HDC hdc);
OWN_WGL_ENTRY(wglCreateLayerContext, HGLRC, HDC hdc, int layer);
OWN_WGL_ENTRY(wglDeleteContext, BOOL, HGLRC hglrc);
OWN_WGL_ENTRY(wglGetCurrentContext, HGLRC);
OWN_WGL_ENTRY(wglGetCurrentDC, HDC);
OWN_WGL_ENTRY(wglGetDefaultProcAddress, PROC, LPCSTR name);
OWN_WGL_ENTRY(wglGetProcAddress, PROC, LPCSTR name);
OWN_WGL_ENTRY(wglMakeCurrent, BOOL, HDC hdc, HGLRC hglrc);
OWN_WGL_ENTRY(wglSetPixelFormat, BOOL, HDC hdc, int format, const PIXELFORMATDESCRIPTOR* descriptor);
OWN_WGL_ENTRY(wglSwapBuffers, BOOL, HDC hdc);
OWN_WGL_ENTRY(wglSwapLayerBuffers, BOOL, HDC hdc, UINT planes);
OWN_WGL_ENTRY(wglSwapMultipleBuffers, DWORD, UINT count, const WGLSWAP* swaps);
OWN_WGL_ENTRY(wglGetExtensionsStringARB, const char*, HDC hdc);
OWN_WGL_ENTRY(wglGetExtensionsStringEXT, const char*);
OWN_WGL_ENTRY(wglMakeContextCurrentARB, BOOL, HDC draw, HDC read, HGLRC hglrc);
OWN_WGL_ENTRY(wglMakeContextCurrentEXT, BOOL, HDC draw, HDC read, HGLRC hglrc);
OWN_WGL_ENTRY(wglGetCurrentReadDCARB, HDC);
OWN_WGL_ENTRY(wglGetCurrentReadDCEXT, HDC);
OWN_WGL_ENTRY(wglCreateContextAttribsARB, HGLRC, HDC hdc, HGLRC share, const int* attributes);

// Makes the driver context `driver_context` the calling thread's, on the drawable that it was last bound to, even while
// another thread owns it. The second argument is 0. False, with no change, when that cannot be; see binding.h.
OWN_WGL_ENTRY(wglFastSwitchContextZ4, BOOL, HANDLE driver_context, UINT reserved);

// The driver context of a context, or null. It is valid until the context is deleted.
OWN_WGL_ENTRY(wglGetGLContextZ4, HANDLE, HGLRC hglrc);

// The calls that the host answers from the current context.
template <class Op>
constexpr bool asks_current_context = false;
#define ASKS_CURRENT_CONTEXT(function) \
  template <>                          \
  constexpr bool asks_current_context<function##_op> = true;
ASKS_CURRENT_CONTEXT(wglUseFontBitmapsA)
ASKS_CURRENT_CONTEXT(wglUseFontBitmapsW)
ASKS_CURRENT_CONTEXT(wglUseFontOutlinesA)
ASKS_CURRENT_CONTEXT(wglUseFontOutlinesW)
ASKS_CURRENT_CONTEXT(wglCreateBufferRegionARB)
ASKS_CURRENT_CONTEXT(wglSaveBufferRegionARB)
ASKS_CURRENT_CONTEXT(wglRestoreBufferRegionARB)
ASKS_CURRENT_CONTEXT(wglBindTexImageARB)
ASKS_CURRENT_CONTEXT(wglReleaseTexImageARB)
ASKS_CURRENT_CONTEXT(wglSwapIntervalEXT)
ASKS_CURRENT_CONTEXT(wglGetSwapIntervalEXT)
#undef ASKS_CURRENT_CONTEXT

// The calls that want the application's own device context, for the font that is selected there.
template <class Op>
constexpr bool asks_for_font = std::is_same_v<Op, wglUseFontBitmapsA_op> || std::is_same_v<Op, wglUseFontBitmapsW_op> ||
                               std::is_same_v<Op, wglUseFontOutlinesA_op> || std::is_same_v<Op, wglUseFontOutlinesW_op>;

template <class Op, class Value>
inline Value host_value(Value value) {
  if constexpr (std::is_same_v<Value, HDC> && !asks_for_font<Op>) {
    return host_hdc(value);
  } else {
    return value;
  }
}

// Deeper than any honest way through gdi32 and back.
constexpr int deepest = 16;

template <class Op, class Result, class... Arguments>
inline Result forward_wgl(Arguments... arguments) {
  thread_state* thread = this_thread();
  if (!thread || thread->depth >= deepest) return Result();
  if constexpr (asks_current_context<Op>) bind_current();
  ++thread->depth;
  if constexpr (std::is_void_v<Result>) {
    host_wgl_entry<Op>()(host_value<Op>(arguments)...);
    --thread->depth;
  } else {
    const Result result = host_wgl_entry<Op>()(host_value<Op>(arguments)...);
    --thread->depth;
    return result;
  }
}
