// The driver under test, beside the program.
#pragma once

#include "ops/ops.h"
#include "support/check.h"

// The driver's entries, by their names: what it exports, and after bind_extensions what it hands out. One that it does
// not have is null.
struct driver_entries {
#define GL_OP(number, function, ...) function##_op::type* function;
#define WGL_OP                       GL_OP
#include "ops/all_ops.inc"
#undef WGL_OP
#undef GL_OP
  unsigned long long (*switch_count)();
};

extern HMODULE driver_module;
extern driver_entries driver;

// Loads the driver and fills in its exports. The process ends with status 1 when it cannot be loaded.
void load_driver(const char* file = "opengl32sys.dll");

// Fills in what is not exported. With a context current.
void bind_extensions();

// A window with a pixel format of the driver: double-buffered, 8 bits a colour, depth and stencil.
struct gl_window {
  HWND hwnd;
  HDC hdc;
};

// A top window whose client area is `width` by `height`, its client origin at (left, top) of the screen, or a child of
// `parent`. `parent` null and not `shown`: hidden.
gl_window make_window(HWND parent, int left, int top, int width, int height, bool shown);
void destroy_window(const gl_window& window);

// Does what the library does for a context that it spreads, on a window of the same pixel format as `window`. The
// process stays one that is spread.
void make_part_context(const gl_window& window);

// Lets the thread's windows have their messages for some time.
void pump(DWORD milliseconds);
