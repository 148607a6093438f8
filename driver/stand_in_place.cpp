#include "stand_in_place.h"

#include <atomic>
#include <cstdlib>

#include "stand_in_raise.h"
#include "window_order.h"
#include "window_thread.h"
#include "wine.h"

namespace {

// Rounds of follow_all: the last that has begun, and the last that has come to its end.
std::atomic<unsigned> begun, ended;

RECT client_on_screen(HWND hwnd) {
  RECT client{};
  GetClientRect(hwnd, &client);
  MapWindowPoints(hwnd, nullptr, reinterpret_cast<POINT*>(&client), 2);
  return client;
}

RECT window_on_screen(const RECT& child, const window_place& window) {
  const LONG left = child.left + window.x, bottom = child.bottom - window.y;
  return {left, bottom - window.size.cy, left + window.size.cx, bottom};
}

bool is_clipped(const placement& p) {
  const RECT whole = {0, 0, p.place.right - p.place.left, p.place.bottom - p.place.top};
  return !EqualRect(&p.part, &whole);
}

void clip(HWND hwnd, const placement& wanted) {
  SetWindowRgn(hwnd, is_clipped(wanted) ? CreateRectRgnIndirect(&wanted.part) : nullptr, TRUE);
}

bool has_size_of(const RECT& a, const RECT& b) {
  return a.right - a.left == b.right - b.left && a.bottom - a.top == b.bottom - b.top;
}

// A hidden stand-in stays where it is, but has the child's size, which is what the host draws in. The list may have
// changed on return: while the thread waits for another's window it takes messages.
void place(stand_in* s, const placement& wanted) {
  const placement before = s->now;
  s->settled = false;
  AcquireSRWLockExclusive(&stand_in_lock);
  s->now = wanted;
  ReleaseSRWLockExclusive(&stand_in_lock);
  HWND hwnd = s->hwnd;
  const LONG width = wanted.place.right - wanted.place.left, height = wanted.place.bottom - wanted.place.top;
  UINT flags = SWP_NOOWNERZORDER | SWP_NOACTIVATE;
  if (wanted.visible && !before.visible) {
    s->raise = raising::stand_ins;
    flags |= SWP_SHOWWINDOW;
  }
  if (!wanted.visible || before.visible || !is_foremost(s->owner)) flags |= SWP_NOZORDER;
  if (!wanted.visible) flags |= before.visible ? SWP_NOMOVE | SWP_HIDEWINDOW : SWP_NOMOVE;
  // At no time may it lie over its neighbours, which would lose what they show.
  const bool clips = is_clipped(wanted) != is_clipped(before) || !EqualRect(&wanted.part, &before.part);
  if (clips && is_clipped(wanted)) clip(hwnd, wanted);
  SetWindowPos(hwnd, HWND_TOP, wanted.place.left, wanted.place.top, width > 0 ? width : 1, height > 0 ? height : 1,
               flags);
  sizing known = sizing::known;
  if (!has_size_of(before.place, wanted.place)) s->size.compare_exchange_strong(known, sizing::changed);
  if (clips && !is_clipped(wanted)) clip(hwnd, wanted);
  await_server();
  s->settled = true;
}

// Where in the child it lies follows from the child's size, and all else the child does.
void place_inside(stand_in* s, const placement& wanted) {
  POINT corner = {wanted.place.left, wanted.place.top};
  ScreenToClient(s->child, &corner);
  SetWindowPos(s->hwnd, nullptr, corner.x, corner.y, wanted.place.right - wanted.place.left,
               wanted.place.bottom - wanted.place.top, SWP_NOZORDER | SWP_NOACTIVATE);
}

// Of a part the window is known as soon as it has changed, and not only when it is told: the drawable has its size and
// its place at once, and a drawable without a back buffer, which is never swapped, keeps the size that it is first
// drawn to with. A window that is minimised leaves the drawable as it was.
void find_window(stand_in* s) {
  RECT child{}, parent{};
  HWND of = s->is_part ? GetAncestor(s->child, GA_PARENT) : nullptr;
  if (!of || !GetClientRect(s->child, &child) || !GetClientRect(of, &parent) || IsRectEmpty(&parent)) return;
  MapWindowPoints(s->child, of, reinterpret_cast<POINT*>(&child), 2);
  AcquireSRWLockExclusive(&stand_in_lock);
  s->has_window = true;
  s->window = {-child.left, child.bottom - parent.bottom, {parent.right, parent.bottom}};
  ReleaseSRWLockExclusive(&stand_in_lock);
}

void change_owner(stand_in* s, HWND owner) {
  AcquireSRWLockExclusive(&stand_in_lock);
  s->owner = owner;
  ReleaseSRWLockExclusive(&stand_in_lock);
  watch_owner(owner);
  share_input(owner);
  SetWindowLongPtrA(s->hwnd, GWLP_HWNDPARENT, reinterpret_cast<LONG_PTR>(owner));
  s->raise = raising::stand_ins;
}

}  // namespace

placement find_placement(HWND child, HWND owner, const window_place* window) {
  placement p = {client_on_screen(child), {}, false};
  RECT seen = p.place;
  if (window) p.place = window_on_screen(p.place, *window);
  for (HWND up = GetAncestor(child, GA_PARENT); up && up != GetDesktopWindow(); up = GetAncestor(up, GA_PARENT)) {
    const RECT client = client_on_screen(up);
    IntersectRect(&seen, &seen, &client);
  }
  p.visible = IsWindowVisible(child) && !IsIconic(owner) && !IsRectEmpty(&seen);
  p.part = seen;
  OffsetRect(&p.part, -p.place.left, -p.place.top);
  return p;
}

bool is_same_placement(const placement& a, const placement& b) {
  return a.visible == b.visible && EqualRect(&a.place, &b.place) && EqualRect(&a.part, &b.part);
}

void destroy_stand_in(stand_in* s) {
  remove_stand_in(s);
  if (!first_stand_in) repeat_on_window_thread(nullptr, 0);
  DestroyWindow(s->hwnd);
  free(s);
}

void follow_child(stand_in* s) {
  if (!IsWindow(s->child)) {
    destroy_stand_in(s);
    return;
  }
  find_window(s);
  HWND owner = GetAncestor(s->child, GA_ROOT);
  if (s->inside) return place_inside(s, find_placement(s->child, owner, s->has_window ? &s->window : nullptr));
  if (owner != s->owner) change_owner(s, owner);
  RECT owner_place{};
  GetWindowRect(owner, &owner_place);
  AcquireSRWLockExclusive(&stand_in_lock);
  s->owner_place = owner_place;
  ReleaseSRWLockExclusive(&stand_in_lock);
  const placement wanted = find_placement(s->child, owner, s->has_window ? &s->window : nullptr);
  if (!is_same_placement(wanted, s->now)) place(s, wanted);
}

unsigned rounds_begun() {
  return begun;
}

bool is_followed_since(unsigned rounds) {
  return static_cast<int>(ended - rounds) > 0;
}

// Each round starts at the front: the list may have changed meanwhile. What was looked at in this round is passed over.
void follow_all() {
  const unsigned round = ++begun;
  if (is_under_wine()) look_at_order();
  for (stand_in* s = first_stand_in; s;) {
    if (s->looked_at == round) {
      s = s->next;
      continue;
    }
    s->looked_at = round;
    follow_child(s);
    s = first_stand_in;
  }
  ended = round;
}
