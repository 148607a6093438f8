#include "stand_in_procedures.h"

#include "stand_in_place.h"
#include "window_thread.h"
#include "x_errors.h"

namespace {

void follow_child_on_window_thread(void* child) {
  if (stand_in* s = find_stand_in(static_cast<HWND>(child))) follow_child(s);
}

void destroy_stand_in_on_window_thread(void* child) {
  if (stand_in* s = find_stand_in(static_cast<HWND>(child))) destroy_stand_in(s);
}

WNDPROC procedure_of(HWND child) {
  AcquireSRWLockShared(&stand_in_lock);
  const stand_in* s = find_stand_in(child);
  const WNDPROC procedure = s ? s->child_procedure : DefWindowProcA;
  ReleaseSRWLockShared(&stand_in_lock);
  return procedure;
}

// Whether Wine takes or changes the child's device context for the message.
bool provokes_errors(UINT message) {
  switch (message) {
    case WM_WINDOWPOSCHANGED:
    case WM_NCPAINT:
    case WM_ERASEBKGND:
    case WM_PAINT:
    case WM_NCDESTROY:
      return true;
    default:
      return false;
  }
}

LRESULT pass_on(WNDPROC procedure, HWND hwnd, UINT message, WPARAM first_word, LPARAM second_word) {
  return IsWindowUnicode(hwnd) ? CallWindowProcW(procedure, hwnd, message, first_word, second_word)
                               : CallWindowProcA(procedure, hwnd, message, first_word, second_word);
}

// The application must find the new size in place when it hears of it, for it may draw at once.
LRESULT CALLBACK child_procedure(HWND hwnd, UINT message, WPARAM first_word, LPARAM second_word) {
  const WNDPROC procedure = procedure_of(hwnd);
  if (message == WM_WINDOWPOSCHANGED) on_window_thread(follow_child_on_window_thread, hwnd);
  if (message == WM_NCDESTROY) on_window_thread(destroy_stand_in_on_window_thread, hwnd);
  const LRESULT result = pass_on(procedure, hwnd, message, first_word, second_word);
  // To move what a child shows, Wine would copy it on the X server, and wait for word of a copy that was refused.
  if (message == WM_WINDOWPOSCHANGING) reinterpret_cast<WINDOWPOS*>(second_word)->flags |= SWP_NOCOPYBITS;
  if (provokes_errors(message)) await_errors();
  return result;
}

// What was uncovered is the child's to draw. A disabled child is a part of its parent, whose program does not know that
// there is something to draw unless the parent hears of it.
void repaint(HWND child, RECT uncovered) {
  RedrawWindow(child, &uncovered, nullptr, RDW_INVALIDATE | RDW_NOCHILDREN);
  HWND enabled = child;
  while (enabled && !IsWindowEnabled(enabled)) enabled = GetAncestor(enabled, GA_PARENT);
  if (!enabled || enabled == child || enabled == GetDesktopWindow()) return;
  MapWindowPoints(child, enabled, reinterpret_cast<POINT*>(&uncovered), 2);
  RedrawWindow(enabled, &uncovered, nullptr, RDW_INVALIDATE | RDW_NOCHILDREN);
}

}  // namespace

LRESULT CALLBACK stand_in_procedure(HWND hwnd, UINT message, WPARAM first_word, LPARAM second_word) {
  switch (message) {
    case WM_PAINT: {
      RECT uncovered;
      const bool any = GetUpdateRect(hwnd, &uncovered, FALSE);
      ValidateRect(hwnd, nullptr);
      const stand_in* s = find_stand_in_by_window(hwnd);
      if (s) MapWindowPoints(hwnd, s->child, reinterpret_cast<POINT*>(&uncovered), 2);
      if (any && s) repaint(s->child, uncovered);
      return 0;
    }
    case WM_ERASEBKGND:
      return 1;
    case WM_NCHITTEST:
      return HTTRANSPARENT;
    default:
      return DefWindowProcA(hwnd, message, first_word, second_word);
  }
}

void hook_child(stand_in* s) {
  const auto ours = reinterpret_cast<LONG_PTR>(child_procedure);
  const LONG_PTR replaced = IsWindowUnicode(s->child) ? SetWindowLongPtrW(s->child, GWLP_WNDPROC, ours)
                                                      : SetWindowLongPtrA(s->child, GWLP_WNDPROC, ours);
  s->child_procedure = reinterpret_cast<WNDPROC>(replaced);
}
