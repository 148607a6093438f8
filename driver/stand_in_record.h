// The records of the windows that stand in for child windows.
#pragma once

#include <windows.h>

#include <atomic>

#include "window_place.h"

// Where a stand-in belongs.
struct placement {
  RECT place;  // in screen coordinates: of the child's client area, or of the window that the child shows a share of
  RECT part;   // what is seen of it, in its own coordinates: what the child and its ancestors let be seen
  bool visible;
};

// What is still to be done to bring an owner's windows to the front.
enum class raising { none, others, stand_ins };

// Whether the host knows the size of what it draws in.
enum class sizing { never_drawn, known, changed };

struct stand_in {
  stand_in* next;
  HWND child;
  HWND owner;  // the child's top window
  HWND hwnd;
  HDC hdc;
  bool inside;              // it is a child of the child; else a popup window
  WNDPROC child_procedure;  // the one that ours replaced
  bool is_part;             // the child is the library's, and shows a share of its parent
  bool has_window;          // the child shows a share of a window; changed under the lock, as the next three
  window_place window;
  placement now;
  RECT owner_place;  // at the last look, on the screen
  unsigned looked_at;
  bool foremost;  // nothing lay over the owner at the last look
  int astray;     // for how many looks the owner's windows have lain in another order than theirs; in its first record
  int restored;   // how often that was mended since they last lay in it; in its first record
  // Read by threads that draw; `raise` set to `stand_ins` by those that show windows.
  std::atomic<raising> raise;
  std::atomic<bool> settled;  // the X server has it where `now` says
  std::atomic<sizing> size;
};

// The list is changed on the window thread alone, under the lock; another thread holds the lock for a look-up, and
// keeps no pointer. No window is moved, shown or destroyed under it.
extern SRWLOCK stand_in_lock;
extern std::atomic<stand_in*> first_stand_in;

inline bool is_empty(SIZE size) {
  return size.cx <= 0 || size.cy <= 0;
}

// The record with a child, with a window that stands in, or one of those with an owner; or null. On the window thread,
// or under the lock.
stand_in* find_stand_in(HWND child);
stand_in* find_stand_in_by_window(HWND hwnd);
stand_in* find_stand_in_by_owner(HWND owner);

// Takes a record off the list, takes the lock for it, and frees nothing. On the window thread.
void remove_stand_in(stand_in* s);
