// Holds the wgl op list against the platform's headers: each row has the prototype that they declare. The host has no
// such headers; tests/unit/ops/prototypes.cpp does the same there for GL.
#define WGL_WGLEXT_PROTOTYPES
#include <type_traits>

#include "ops/ops.h"

// A pbuffer's handle is declared by then, and is the same whichever of the two extensions names it. The header's other
// handles are in no row.
#undef DECLARE_HANDLE
#define DECLARE_HANDLE(name) using name = HPBUFFERARB
#include <GL/wglext.h>

extern "C" {
// What gdi32 has under names of its own.
decltype(ChoosePixelFormat) wglChoosePixelFormat;
decltype(DescribePixelFormat) wglDescribePixelFormat;
decltype(GetPixelFormat) wglGetPixelFormat;
decltype(SetPixelFormat) wglSetPixelFormat;
decltype(SwapBuffers) wglSwapBuffers;
// What the headers lack: an export of the platform's library that they leave out, and the driver's private functions.
PROC WINAPI wglGetDefaultProcAddress(LPCSTR name);
BOOL WINAPI wglFastSwitchContextZ4(HANDLE driver_context, UINT reserved);
HANDLE WINAPI wglGetGLContextZ4(HGLRC hglrc);
}

#define WGL_OP(number, function, ...) \
  static_assert(std::is_same_v<decltype(::function), function##_op::type>, #function);
#include "ops/wgl_ops.inc"
#undef WGL_OP
