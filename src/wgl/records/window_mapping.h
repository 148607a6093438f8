// The record of one bound application window, and its layout over the parts. It hangs on the window as a property.
#pragma once

#include "dispatch/thread_state.h"

struct __osw_child_part {
  HWND child_hwnd;  // (w)
  HDC child_hdc;    // (w) held for the life of the child
  u32 part_index;
  RECT part_rect;         // (w) in client coordinates of the application's window
  RECT screen_rect;       // in screen coordinates, from the system
  u32 visible;            // (w) 1 when the part has a share of the window
  i32 viewport_offset_x;  // (w) left edge of the application's client area in the child's coordinates
  i32 viewport_offset_y;  // (w) its bottom edge relative to the child's bottom edge
};

// Written by the thread that pumps the window; workers load the fields marked (w) without a lock, relaxed.
struct __osw_window_mapping {
  HDC app_hdc;  // of the first binding
  i32 pixel_format;
  PIXELFORMATDESCRIPTOR pfd;
  HWND app_hwnd;
  RECT client_rect;  // (w)
  RECT window_rect;
  __osw_child_part parts[max_parts];
  bool children_hidden;   // while the application's own window shows the picture
  u32 users;              // the window, and each thread that has it bound; under `__osw_mapping_lock`
  u32 changes;            // of the window that are still to be laid out; atomic
  u32 takes_no_messages;  // 1 once the children's thread has not answered; relaxed
  u32 moves_missed;       // 1 while children may not stand where they were told to; relaxed
};

extern const char mapping_property[];  // "child_window_mapping_prop_str"

// Guards `users` of every mapping together with the property by which a mapping is found. Made and deleted with the
// process.
extern CRITICAL_SECTION __osw_mapping_lock;

// Whether a window belongs to this process. Another's may have properties of the same names, which lead into that
// one's memory.
bool is_of_this_process(HWND hwnd);

// The window's mapping, or null. The pointer may be used on the thread that owns the window, or by whoever holds a use.
__osw_window_mapping* __osw_window_mapping_of(HWND hwnd);

// The window's mapping with a use taken, or null. Any thread. A mapping outlives its window as long as someone uses it.
__osw_window_mapping* __osw_use_window_mapping(HWND hwnd);

// Gives a use back, and frees the mapping with the last. Null is passed over. Any thread.
void __osw_drop_window_mapping(__osw_window_mapping* mapping);

// Hangs a copy of `record` on its window, with the window as its one user. Result: 0 without memory.
u32 __osw_attach_window_mapping(const __osw_window_mapping& record);

// Takes the mapping off its window and gives the window's use back.
void __osw_detach_window_mapping(HWND hwnd);

// Loads and stores of a rectangle that several threads share.
RECT __osw_load_rect(const RECT& rect);
void __osw_store_rect(RECT& rect, const RECT& value);

struct extent {
  i32 width;
  i32 height;
};

// The size of the client area, as of the latest change of the window that the mapping followed.
inline extent client_extent(const __osw_window_mapping* mapping) {
  const RECT client = __osw_load_rect(mapping->client_rect);
  return {client.right - client.left, client.bottom - client.top};
}
