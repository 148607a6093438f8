// The driver's record of each rendering context.
#pragma once

#include <windows.h>

#include <GL/gl.h>

struct point {
  GLint x, y;
  bool operator==(const point&) const = default;
};

// Wraps in place of overflowing: coordinates may be anything.
constexpr GLint less(GLint value, GLint by) {
  return static_cast<GLint>(static_cast<GLuint>(value) - static_cast<GLuint>(by));
}

struct scissor_state {
  GLint box[4];
  bool enabled;
};

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
  bool spared;               // the drawable is not what the user sees
  bool counts_samples;       // and yet must have its pixels, since the application counts them
  SIZE counted_size;         // of the window, in pixels, when the host last saw it for that
  bool stale;                // the host has, or may have, other drawables than these
  HDC host_draw, host_read;  // what the host was given last
  bool refused;              // the host refused the binding, and is not asked for now
  bool refusal_known;        // it did when it was asked last, and that was reported

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

  bool has_lists;     // not in a core profile
  bool window_drawn;  // the draw framebuffer is 0; kept only while there is a share

  // The part of the application's window that the drawable shows, if it is not all of it; both as told last.
  point told_offset;  // of the window in the child window, not yet in force
  bool has_share;
  point offset;
  SIZE share_size;

  bool cut_pending;  // the drawable or the share was changed since the scissor test was looked at
  bool is_cut;       // the host has the scissor test of the share, and the application this one
  scissor_state uncut;
  bool is_never_cut;        // its viewports have scissor boxes of their own
  int withheld_extensions;  // among the indexed names, in a process that is told less; -1: not counted yet
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
