// The driver's record of each rendering context.
#pragma once

#include <windows.h>

#include <GL/gl.h>

struct point {
  GLint x, y;
  bool operator==(const point&) const = default;
};

// The offsets that are contained in the host's values of a context. The host's value is the application's plus this.
struct applied_offsets {
  point viewport, scissor, raster;
  bool operator==(const applied_offsets&) const = default;
};

// What glPushAttrib saved at one level of the stack.
struct attribute_level {
  GLbitfield mask;
  applied_offsets applied;
};

constexpr int attribute_level_count = 64;

// A drawable as an application names it. A window's device context may be gone while the window is still drawn to.
struct drawable {
  HDC hdc;
  HWND hwnd;  // null for a pbuffer or a bitmap
};

struct context {
  context* next;  // of all records; a record is never freed, so that a stale driver context faults nobody
  HGLRC hglrc;    // the host's handle, which is the application's too; null in a record that is free
  int pixel_format;

  // The thread that made it current with wglMakeCurrent, and the thread on which it is current on the host; 0 for none.
  // The owner is written under the registry's lock, the holder by the thread that it names; others may read either.
  DWORD owner;
  DWORD holder;

  // The binding of the last wglMakeCurrent. From here on everything belongs to the thread that has the context current.
  drawable draw, read;
  bool spared;               // the drawable is not what the user sees: the host draws to a window of one pixel
  bool stale;                // the host has, or may have, other drawables than these
  HDC host_draw, host_read;  // what the host was given last

  HWND spare_window;
  HDC spare_hdc;
  bool spare_failed;
  drawable borrowed;  // our own device context of a window whose application gave its own back

  // The viewport and the scissor box that a context gets with its first drawable, and whether it still has them.
  bool bound_before;
  bool initialized;
  bool has_initial_size;  // the first drawable was a window, and its client area this big, in pixels
  SIZE initial_size;
  bool viewport_pending, scissor_pending;

  bool has_raster_position;  // not in a core profile
  bool window_drawn;         // the draw framebuffer is 0; kept only while there is an offset
  point offset;              // of the application's window in the drawable
  applied_offsets applied;
  attribute_level levels[attribute_level_count];
  int withheld_extensions;  // among the indexed names; -1: not counted yet
};

// Enters a context that the host made for `hdc`. Null when there is no memory. Any thread, as for all of these.
context* register_context(HGLRC hglrc, int pixel_format);

// The record of a handle, or null. A handle of null has none.
context* find_context(HGLRC hglrc);

// Frees the record of a context that the host has deleted. The record may be used again for another.
void unregister_context(context* c);

// Takes the size that the initial viewport and scissor box of a context have, from its first drawable: `hwnd`, or null
// for one that is no window. On the thread that has the context current.
void note_first_drawable(context* c, HWND hwnd);

// Makes `thread` the owner of `c` and takes its ownership of `previous` (may be null) away. Returns false, with nothing
// changed, when another thread owns it.
bool take_ownership(context* c, context* previous, DWORD thread);

// Notes that no thread owns `c`, or that `thread` (0: none) has it current on the host.
void drop_ownership(context* c);
void set_holder(context* c, DWORD thread);

// The two, as another thread may read them.
DWORD owner_of(const context* c);
DWORD holder_of(const context* c);
