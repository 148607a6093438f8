#include "stand_in_raise.h"

#include <algorithm>

#include "report.h"
#include "sent_messages.h"
#include "window_order.h"

namespace {

std::atomic<HWND> last_foreground;

void raise_stand_ins(HWND owner) {
  raised_windows list{};
  // Those that have only now come to the owner may lie under it.
  for (HWND at = GetWindow(owner, GW_HWNDLAST); at; at = GetWindow(at, GW_HWNDPREV)) {
    const stand_in* s = find_stand_in_by_window(at);
    if (s && s->owner == owner && s->now.visible) add_raised(&list, at, depth_of(s->child));
  }
  leave_front(list, owner);
  move_to_front(list, 0);
}

// Without a wait: these are windows of other threads.
void raise_others(HWND owner) {
  raised_windows list{};
  for (HWND at = owner; (at = GetWindow(at, GW_HWNDPREV));) {
    if (IsWindowVisible(at) && !find_stand_in_by_window(at) && is_owned_by(at, owner)) add_raised(&list, at, 0);
  }
  move_to_front(list, SWP_ASYNCWINDOWPOS);
}

void set_raising(HWND owner, raising step) {
  for (stand_in* s = first_stand_in; s; s = s->next) {
    if (s->owner == owner) s->raise = step;
  }
}

// To the next step, unless what was raised has meanwhile been left behind again.
void advance_raising(HWND owner, raising done, raising next) {
  for (stand_in* s = first_stand_in; s; s = s->next) {
    raising expected = done;
    if (s->owner == owner) s->raise.compare_exchange_strong(expected, next);
  }
}

void raise_some() {
  for (stand_in* s = first_stand_in; s; s = s->next) {
    if (s->raise == raising::none || !s->foremost) continue;
    HWND owner = s->owner;
    if (s->raise == raising::stand_ins) {
      raise_with(s);
    } else {
      advance_raising(owner, raising::others, raising::none);
      raise_others(owner);
    }
    return;
  }
}

void look_for_new_foreground() {
  HWND foreground = GetForegroundWindow();
  if (last_foreground.exchange(foreground) == foreground || !foreground) return;
  set_raising(GetAncestor(foreground, GA_ROOTOWNER), raising::stand_ins);
}

void look_for_new_foremost() {
  for (stand_in* s = first_stand_in; s; s = s->next) {
    const bool before = s->foremost;
    s->foremost = is_foremost(s->owner);
    if (s->foremost && !before) s->raise = raising::stand_ins;
  }
}

struct owned_order {
  int stand_ins;  // visible, above the owner
  bool right;     // by their depth, and with no other window of the owner's below one
};

owned_order order_above(HWND owner) {
  owned_order found = {0, true};
  int depth = 0;
  bool others = false;
  for (HWND at = owner; (at = GetWindow(at, GW_HWNDPREV));) {
    if (!IsWindowVisible(at) || !is_owned_by(at, owner)) continue;
    const stand_in* s = find_stand_in_by_window(at);
    if (!s || s->owner != owner) {
      others = true;
      continue;
    }
    const int its = depth_of(s->child);
    found.right &= !others && its >= depth;
    depth = its;
    ++found.stand_ins;
  }
  return found;
}

bool is_in_order(HWND owner) {
  int shown = 0;
  for (const stand_in* s = first_stand_in; s; s = s->next) shown += s->owner == owner && IsWindowVisible(s->hwnd);
  const owned_order found = order_above(owner);
  return found.right && found.stand_ins == shown;
}

bool is_raising(HWND owner) {
  for (const stand_in* s = first_stand_in; s; s = s->next) {
    if (s->owner == owner && s->raise != raising::none) return true;
  }
  return false;
}

// Wine moves a window to the front on the X server when it is shown and when it gets the focus, and keeps the request
// for the latter until it sends others. A look at the input sends it, and the stand-ins are raised after it.
void note_raised(HWND hwnd) {
  if (!first_stand_in) return;
  HWND owner = GetAncestor(hwnd, GA_ROOT);
  AcquireSRWLockShared(&stand_in_lock);
  const bool any = find_stand_in_by_owner(owner) != nullptr;
  ReleaseSRWLockShared(&stand_in_lock);
  if (!any) return;
  GetInputState();
  await_server();
  AcquireSRWLockShared(&stand_in_lock);
  set_raising(owner, raising::stand_ins);
  ReleaseSRWLockShared(&stand_in_lock);
}

void look_at_message(const CWPSTRUCT& sent) {
  if (sent.message == WM_SETFOCUS) note_raised(sent.hwnd);
  if (sent.message != WM_WINDOWPOSCHANGED) return;
  const UINT flags = reinterpret_cast<const WINDOWPOS*>(sent.lParam)->flags;
  if (!(flags & SWP_NOZORDER) || (flags & SWP_SHOWWINDOW)) note_raised(sent.hwnd);
}

}  // namespace

void watch_owner(HWND owner) {
  const DWORD thread = GetWindowThreadProcessId(owner, nullptr);
  if (watch_sent_messages(thread, look_at_message)) return;
  report("the messages of thread %lu cannot be watched, error %lu", thread, GetLastError());
}

bool has_new_foreground() {
  return GetForegroundWindow() != last_foreground;
}

void look_at_order() {
  look_for_new_foreground();
  look_for_new_foremost();
  raise_some();
}

// What the X server tells late can undo what was raised, and so can the program. After a raise that was of no use the
// next one waits for twice as long: a dialog's thread may be busy for long, and moves it no sooner.
void look_for_disorder() {
  constexpr int first_wait = 5, most_doublings = 8;
  for (stand_in* s = first_stand_in; s; s = s->next) {
    if (s != find_stand_in_by_owner(s->owner) || !s->foremost || is_raising(s->owner)) continue;
    if (is_in_order(s->owner)) {
      s->astray = s->restored = 0;
    } else if (++s->astray >= first_wait << std::min(s->restored, most_doublings)) {
      s->astray = 0;
      ++s->restored;
      set_raising(s->owner, raising::stand_ins);
    }
  }
}

void raise_with(const stand_in* s) {
  if (s->raise != raising::stand_ins || !s->foremost) return;
  HWND owner = s->owner;
  set_raising(owner, raising::others);
  raise_stand_ins(owner);
}
