#include "window_order.h"

#include "x_errors.h"

namespace {

constexpr UINT order_alone = SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE | SWP_NOOWNERZORDER;

}  // namespace

int depth_of(HWND child) {
  int depth = 0;
  while ((child = GetAncestor(child, GA_PARENT))) ++depth;
  return depth;
}

void add_raised(raised_windows* list, HWND hwnd, int depth) {
  if (list->count == most_raised) return;
  int at = list->count++;
  for (; at > 0 && list->depth[at - 1] > depth; --at) {
    list->hwnd[at] = list->hwnd[at - 1];
    list->depth[at] = list->depth[at - 1];
  }
  list->hwnd[at] = hwnd;
  list->depth[at] = depth;
}

void move_to_front(const raised_windows& list, UINT flags) {
  for (int i = 0; i < list.count; ++i) SetWindowPos(list.hwnd[i], HWND_TOP, 0, 0, 0, 0, order_alone | flags);
}

void leave_front(const raised_windows& list, HWND owner) {
  if (list.count == 1) SetWindowPos(list.hwnd[0], owner, 0, 0, 0, 0, order_alone);
}

// Where the mouse is stands in an answer of the server's, which comes after all that this thread asked before. But Wine
// does not ask within 100 ms of a move of the mouse, and takes it for one that a window is shown under the mouse. So
// the server is asked by the connection that is drawn with, too. It takes turns with its connections: in the first
// answer's turn it may not yet have looked whether another has asked something, in the second's the other may come
// later.
void await_server() {
  POINT unused;
  GetCursorPos(&unused);
  for (int turn = 0; turn < 3; ++turn) await_errors();
}

bool is_owned_by(HWND hwnd, HWND owner) {
  while (hwnd && hwnd != owner) hwnd = GetWindow(hwnd, GW_OWNER);
  return hwnd != nullptr;
}

bool is_foremost(HWND owner) {
  RECT place, other, common;
  GetWindowRect(owner, &place);
  for (HWND at = owner; (at = GetWindow(at, GW_HWNDPREV));) {
    if (!IsWindowVisible(at) || is_owned_by(at, owner)) continue;
    GetWindowRect(at, &other);
    if (IntersectRect(&common, &place, &other)) return false;
  }
  return true;
}
