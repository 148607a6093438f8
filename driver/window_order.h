// The order of top windows, which Wine and the X server may hold to be different.
//
// Wine moves a window to the front on the X server, and nowhere else; and when it brings a top window to the front with
// all that it owns, it moves one of them there. So the windows above an owner are moved to the front one by one, from
// the lowest up: first the stand-ins, those for children of children last, and then the application's own, dialogs and
// the like.
#pragma once

#include <windows.h>

constexpr int most_raised = 64;

// Windows to be moved to the front, the lowest first. Those beyond the most are left where they are.
struct raised_windows {
  HWND hwnd[most_raised];
  int depth[most_raised];
  int count;
};

// How many ancestors a window has.
int depth_of(HWND child);

// Adds a window behind those of its depth, before the deeper ones.
void add_raised(raised_windows* list, HWND hwnd, int depth);

// Moves them there one after the other, with `flags` of SetWindowPos besides those that leave all else as it is. On a
// thread that owns them, or with SWP_ASYNCWINDOWPOS.
void move_to_front(const raised_windows& list, UINT flags);

// Wine leaves a window alone that is in front by its own order, whatever the X server's is: a single one is put behind
// `owner` first. On the thread that owns it.
void leave_front(const raised_windows& list, HWND owner);

// Returns when the X server has heard what this thread asked for before: it hears of a window from this thread, and of
// what is drawn in it by another connection.
void await_server();

bool is_owned_by(HWND hwnd, HWND owner);

// Whether no other window lies over the owner, above which nothing of it may come. Any thread.
bool is_foremost(HWND owner);
