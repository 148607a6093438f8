#include "stand_in.h"

#include <atomic>
#include <cstdlib>

#include "host.h"
#include "report.h"
#include "sent_messages.h"
#include "window_order.h"
#include "window_thread.h"

namespace {

// How often the window thread looks where the children are. Changes of a child itself are seen at once.
constexpr UINT look_interval = 20;  // ms

constexpr const char* class_name = "osw_driver_stand_in";
constexpr DWORD extended_style = WS_EX_NOACTIVATE | WS_EX_TOOLWINDOW | WS_EX_TRANSPARENT | WS_EX_LAYERED;

// Where a stand-in belongs.
struct placement {
  RECT place;  // of the child's client area, in screen coordinates
  RECT part;   // what its ancestors let be seen of it, in its own coordinates
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
  WNDPROC child_procedure;  // the one that ours replaced
  placement now;            // changed under the lock, as the next
  RECT owner_place;         // at the last look, on the screen
  unsigned looked_at;
  bool foremost;  // nothing lay over the owner at the last look
  // Read by threads that draw; `raise` set to `stand_ins` by those that show windows.
  std::atomic<raising> raise;
  std::atomic<bool> settled;  // the X server has it where `now` says
  std::atomic<sizing> size;
};

// The list is changed on the window thread alone, under the lock; another thread holds the lock for a look-up, and
// keeps no pointer. No window is touched under it.
SRWLOCK lock = SRWLOCK_INIT;
std::atomic<stand_in*> first;

bool is_under_wine() {
  static const bool under_wine = GetProcAddress(GetModuleHandleA("ntdll.dll"), "wine_get_version") != nullptr;
  return under_wine;
}

bool is_child(HWND hwnd) {
  return GetAncestor(hwnd, GA_PARENT) != GetDesktopWindow();
}

stand_in* find(HWND child) {
  for (stand_in* s = first; s != nullptr; s = s->next) {
    if (s->child == child) return s;
  }
  return nullptr;
}

stand_in* find_by_window(HWND hwnd) {
  for (stand_in* s = first; s != nullptr; s = s->next) {
    if (s->hwnd == hwnd) return s;
  }
  return nullptr;
}

stand_in* find_by_owner(HWND owner) {
  for (stand_in* s = first; s != nullptr; s = s->next) {
    if (s->owner == owner) return s;
  }
  return nullptr;
}

RECT client_on_screen(HWND hwnd) {
  RECT client = {};
  GetClientRect(hwnd, &client);
  MapWindowPoints(hwnd, nullptr, reinterpret_cast<POINT*>(&client), 2);
  return client;
}

placement find_placement(HWND child, HWND owner) {
  placement p = {client_on_screen(child), {}, false};
  RECT seen = p.place;
  for (HWND up = GetAncestor(child, GA_PARENT); up != nullptr && up != GetDesktopWindow();
       up = GetAncestor(up, GA_PARENT)) {
    const RECT client = client_on_screen(up);
    IntersectRect(&seen, &seen, &client);
  }
  p.visible = IsWindowVisible(child) && !IsIconic(owner) && !IsRectEmpty(&seen);
  p.part = seen;
  OffsetRect(&p.part, -p.place.left, -p.place.top);
  return p;
}

bool is_same(const placement& a, const placement& b) {
  return a.visible == b.visible && EqualRect(&a.place, &b.place) && EqualRect(&a.part, &b.part);
}

void clip(HWND hwnd, const placement& wanted) {
  const RECT whole = {0, 0, wanted.place.right - wanted.place.left, wanted.place.bottom - wanted.place.top};
  SetWindowRgn(hwnd, EqualRect(&wanted.part, &whole) ? nullptr : CreateRectRgnIndirect(&wanted.part), TRUE);
}

void raise_stand_ins(HWND owner) {
  raised_windows list = {};
  // Those that have only now come to the owner may lie under it.
  for (HWND at = GetWindow(owner, GW_HWNDLAST); at != nullptr; at = GetWindow(at, GW_HWNDPREV)) {
    const stand_in* s = find_by_window(at);
    if (s != nullptr && s->owner == owner && s->now.visible) add_raised(&list, at, depth_of(s->child));
  }
  leave_front(list, owner);
  move_to_front(list, 0);
}

// Without a wait: these are windows of other threads.
void raise_others(HWND owner) {
  raised_windows list = {};
  for (HWND at = owner; (at = GetWindow(at, GW_HWNDPREV)) != nullptr;) {
    if (IsWindowVisible(at) && find_by_window(at) == nullptr && is_owned_by(at, owner)) add_raised(&list, at, 0);
  }
  move_to_front(list, SWP_ASYNCWINDOWPOS);
}

void set_raising(HWND owner, raising step) {
  for (stand_in* s = first; s != nullptr; s = s->next) {
    if (s->owner == owner) s->raise = step;
  }
}

// To the next step, unless what was raised has meanwhile been left behind again.
void advance_raising(HWND owner, raising done, raising next) {
  for (stand_in* s = first; s != nullptr; s = s->next) {
    raising expected = done;
    if (s->owner == owner) s->raise.compare_exchange_strong(expected, next);
  }
}

// One step for one owner, if there is any to do now: not before the owner itself is in front. The steps are apart
// because Wine has to hear from the X server of the first before the second, or it takes the windows to lie in the
// other order.
void raise_some() {
  for (stand_in* s = first; s != nullptr; s = s->next) {
    HWND owner = s->owner;
    if (s->raise == raising::none || !s->foremost) continue;
    if (s->raise == raising::stand_ins) {
      set_raising(owner, raising::others);
      raise_stand_ins(owner);
    } else {
      advance_raising(owner, raising::others, raising::none);
      raise_others(owner);
    }
    return;
  }
}

std::atomic<HWND> last_foreground;

void look_for_new_foreground() {
  HWND foreground = GetForegroundWindow();
  if (last_foreground.exchange(foreground) == foreground || foreground == nullptr) return;
  set_raising(GetAncestor(foreground, GA_ROOTOWNER), raising::stand_ins);
}

// An owner that has come to the front has left its stand-ins behind.
void look_for_new_foremost() {
  for (stand_in* s = first; s != nullptr; s = s->next) {
    const bool before = s->foremost;
    s->foremost = is_foremost(s->owner);
    if (s->foremost && !before) s->raise = raising::stand_ins;
  }
}

bool has_size_of(const RECT& a, const RECT& b) {
  return a.right - a.left == b.right - b.left && a.bottom - a.top == b.bottom - b.top;
}

// The X server hears of a window from this thread and of what is drawn in it by another connection. Where the mouse is
// stands in an answer of the server's, which comes after all that it was asked before. Within 100 ms of a move of the
// mouse Wine does not ask, and nothing is awaited.
void await_server() {
  POINT unused;
  GetCursorPos(&unused);
}

// A hidden stand-in stays where it is, but has the child's size, which is what the host draws in. The list may have
// changed on return: while the thread waits for another's window it takes messages.
void place(stand_in* s, const placement& wanted) {
  const placement before = s->now;
  s->settled = false;
  AcquireSRWLockExclusive(&lock);
  s->now = wanted;
  ReleaseSRWLockExclusive(&lock);
  HWND hwnd = s->hwnd;
  const LONG width = wanted.place.right - wanted.place.left, height = wanted.place.bottom - wanted.place.top;
  UINT flags = SWP_NOOWNERZORDER | SWP_NOACTIVATE;
  if (wanted.visible && !before.visible) {
    s->raise = raising::stand_ins;
    flags |= SWP_SHOWWINDOW;
  }
  if (!wanted.visible || before.visible || !is_foremost(s->owner)) flags |= SWP_NOZORDER;
  if (!wanted.visible) flags |= before.visible ? SWP_NOMOVE | SWP_HIDEWINDOW : SWP_NOMOVE;
  SetWindowPos(hwnd, HWND_TOP, wanted.place.left, wanted.place.top, width > 0 ? width : 1, height > 0 ? height : 1,
               flags);
  sizing known = sizing::known;
  if (!has_size_of(before.place, wanted.place)) s->size.compare_exchange_strong(known, sizing::changed);
  if (wanted.visible && !EqualRect(&wanted.part, &before.part)) clip(hwnd, wanted);
  await_server();
  s->settled = true;
}

void destroy(stand_in* s) {
  AcquireSRWLockExclusive(&lock);
  if (first == s) {
    first = s->next;
  } else {
    stand_in* before = first;
    while (before->next != s) before = before->next;
    before->next = s->next;
  }
  const bool was_last = first == nullptr;
  ReleaseSRWLockExclusive(&lock);
  if (was_last) repeat_on_window_thread(nullptr, 0);
  DestroyWindow(s->hwnd);
  free(s);
}

// Wine moves a window to the front on the X server when it is shown and when it gets the focus, and keeps the request
// for the latter until it sends others. A look at the input sends it, and the stand-ins are raised after it.
void note_raised(HWND hwnd) {
  if (first == nullptr) return;
  HWND owner = GetAncestor(hwnd, GA_ROOT);
  AcquireSRWLockShared(&lock);
  const bool any = find_by_owner(owner) != nullptr;
  ReleaseSRWLockShared(&lock);
  if (!any) return;
  GetInputState();
  await_server();
  AcquireSRWLockShared(&lock);
  set_raising(owner, raising::stand_ins);
  ReleaseSRWLockShared(&lock);
}

void look_at_message(const CWPSTRUCT& sent) {
  if (sent.message == WM_SETFOCUS) note_raised(sent.hwnd);
  if (sent.message != WM_WINDOWPOSCHANGED) return;
  const UINT flags = reinterpret_cast<const WINDOWPOS*>(sent.lParam)->flags;
  if (!(flags & SWP_NOZORDER) || (flags & SWP_SHOWWINDOW)) note_raised(sent.hwnd);
}

void watch_owner(HWND owner) {
  const DWORD thread = GetWindowThreadProcessId(owner, nullptr);
  if (watch_sent_messages(thread, look_at_message)) return;
  report("the messages of thread %lu cannot be watched, error %lu", thread, GetLastError());
}

// Without a window manager keys go to the window under the mouse: they are the application's to have.
void share_input(HWND owner) {
  AttachThreadInput(GetCurrentThreadId(), GetWindowThreadProcessId(owner, nullptr), TRUE);
}

void follow(stand_in* s) {
  if (!IsWindow(s->child)) {
    destroy(s);
    return;
  }
  HWND owner = GetAncestor(s->child, GA_ROOT);
  if (owner != s->owner) {
    AcquireSRWLockExclusive(&lock);
    s->owner = owner;
    ReleaseSRWLockExclusive(&lock);
    watch_owner(owner);
    share_input(owner);
    SetWindowLongPtrA(s->hwnd, GWLP_HWNDPARENT, reinterpret_cast<LONG_PTR>(owner));
    s->raise = raising::stand_ins;
  }
  RECT owner_place = {};
  GetWindowRect(owner, &owner_place);
  AcquireSRWLockExclusive(&lock);
  s->owner_place = owner_place;
  ReleaseSRWLockExclusive(&lock);
  const placement wanted = find_placement(s->child, owner);
  if (!is_same(wanted, s->now)) place(s, wanted);
}

// Each round starts at the front: the list may have changed meanwhile. What was looked at in this round is passed over.
void follow_all() {
  static unsigned round;
  ++round;
  look_for_new_foreground();
  look_for_new_foremost();
  raise_some();
  for (stand_in* s = first; s != nullptr;) {
    if (s->looked_at == round) {
      s = s->next;
      continue;
    }
    s->looked_at = round;
    follow(s);
    s = first;
  }
}

void follow_on_window_thread(void* child) {
  if (stand_in* s = find(static_cast<HWND>(child))) follow(s);
}

void bring_on_window_thread(void* child) {
  follow_all();
  const stand_in* s = find(static_cast<HWND>(child));
  if (s != nullptr && s->raise == raising::stand_ins && s->foremost) {
    set_raising(s->owner, raising::others);
    raise_stand_ins(s->owner);
  }
  await_server();
}

void destroy_on_window_thread(void* child) {
  if (stand_in* s = find(static_cast<HWND>(child))) destroy(s);
}

WNDPROC procedure_of(HWND child) {
  AcquireSRWLockShared(&lock);
  const stand_in* s = find(child);
  const WNDPROC procedure = s == nullptr ? DefWindowProcA : s->child_procedure;
  ReleaseSRWLockShared(&lock);
  return procedure;
}

// The application must find the new size in place when it hears of it, for it may draw at once.
LRESULT CALLBACK child_procedure(HWND hwnd, UINT message, WPARAM first_word, LPARAM second_word) {
  const WNDPROC procedure = procedure_of(hwnd);
  if (message == WM_WINDOWPOSCHANGED) on_window_thread(follow_on_window_thread, hwnd);
  if (message == WM_NCDESTROY) on_window_thread(destroy_on_window_thread, hwnd);
  return IsWindowUnicode(hwnd) ? CallWindowProcW(procedure, hwnd, message, first_word, second_word)
                               : CallWindowProcA(procedure, hwnd, message, first_word, second_word);
}

void hook(stand_in* s) {
  const auto ours = reinterpret_cast<LONG_PTR>(child_procedure);
  const LONG_PTR replaced = IsWindowUnicode(s->child) ? SetWindowLongPtrW(s->child, GWLP_WNDPROC, ours)
                                                      : SetWindowLongPtrA(s->child, GWLP_WNDPROC, ours);
  s->child_procedure = reinterpret_cast<WNDPROC>(replaced);
}

// What was uncovered is the child's to draw. A disabled child is a part of its parent, whose program does not know that
// there is something to draw unless the parent hears of it.
void repaint(HWND child, RECT uncovered) {
  InvalidateRect(child, &uncovered, FALSE);
  HWND enabled = child;
  while (enabled != nullptr && !IsWindowEnabled(enabled)) enabled = GetAncestor(enabled, GA_PARENT);
  if (enabled == nullptr || enabled == child || enabled == GetDesktopWindow()) return;
  MapWindowPoints(child, enabled, reinterpret_cast<POINT*>(&uncovered), 2);
  InvalidateRect(enabled, &uncovered, FALSE);
}

LRESULT CALLBACK stand_in_procedure(HWND hwnd, UINT message, WPARAM first_word, LPARAM second_word) {
  switch (message) {
    case WM_PAINT: {
      RECT uncovered;
      const bool any = GetUpdateRect(hwnd, &uncovered, FALSE);
      ValidateRect(hwnd, nullptr);
      const stand_in* s = find_by_window(hwnd);
      if (any && s != nullptr) repaint(s->child, uncovered);
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

struct request {
  HWND child;
  int pixel_format;
  const PIXELFORMATDESCRIPTOR* descriptor;
};

bool make_window(stand_in* s, const request& r) {
  s->owner = GetAncestor(r.child, GA_ROOT);
  s->hwnd = CreateWindowExA(extended_style, class_name, "", WS_POPUP | WS_DISABLED, 0, 0, 1, 1, s->owner, nullptr,
                            nullptr, nullptr);
  if (s->hwnd == nullptr) return false;
  share_input(s->owner);
  // A layered window is not shown before it has its attributes; that it is layered lets the mouse through.
  SetLayeredWindowAttributes(s->hwnd, 0, 255, LWA_ALPHA);
  s->hdc = GetDC(s->hwnd);
  if (host_wgl_entry<wglSetPixelFormat_op>()(s->hdc, r.pixel_format, r.descriptor)) return true;
  DestroyWindow(s->hwnd);
  return false;
}

void make_on_window_thread(void* argument) {
  const request& r = *static_cast<const request*>(argument);
  register_window_class(class_name, stand_in_procedure);
  if (find(r.child) != nullptr) return;
  auto* s = static_cast<stand_in*>(calloc(1, sizeof(stand_in)));
  if (s == nullptr) return;
  s->child = r.child;
  s->settled = true;
  if (!make_window(s, r)) {
    report("no stand-in for child window %p, error %lu", static_cast<void*>(r.child), GetLastError());
    free(s);
    return;
  }
  if (first == nullptr) repeat_on_window_thread(follow_all, look_interval);
  AcquireSRWLockExclusive(&lock);
  hook(s);
  s->next = first;
  first = s;
  ReleaseSRWLockExclusive(&lock);
  follow(s);
}

}  // namespace

void make_stand_in(HWND child, int pixel_format, const PIXELFORMATDESCRIPTOR* descriptor) {
  if (child == nullptr || !is_under_wine() || !is_child(child) || stand_in_hdc(child) != nullptr) return;
  watch_owner(GetAncestor(child, GA_ROOT));
  request r = {child, pixel_format, descriptor};
  on_window_thread(make_on_window_thread, &r);
}

HDC stand_in_hdc(HWND child) {
  if (child == nullptr || first == nullptr) return nullptr;
  AcquireSRWLockShared(&lock);
  const stand_in* s = find(child);
  HDC hdc = s == nullptr ? nullptr : s->hdc;
  ReleaseSRWLockShared(&lock);
  return hdc;
}

bool take_resized(HWND child) {
  if (child == nullptr || first == nullptr) return false;
  AcquireSRWLockShared(&lock);
  stand_in* s = find(child);
  const bool resized = s != nullptr && s->size.exchange(sizing::known) == sizing::changed;
  ReleaseSRWLockShared(&lock);
  return resized;
}

// The stand-ins of an owner that has moved lie over each other's new places, so all must have gone there. An owner that
// was activated lies over its stand-ins.
void catch_up(HWND child) {
  if (child == nullptr || first == nullptr) return;
  AcquireSRWLockShared(&lock);
  const stand_in* s = find(child);
  const placement now = s == nullptr ? placement{} : s->now;
  const RECT last_place = s == nullptr ? RECT{} : s->owner_place;
  const bool at_rest = s != nullptr && s->settled && s->raise != raising::stand_ins;
  ReleaseSRWLockShared(&lock);
  if (s == nullptr) return;
  HWND owner = GetAncestor(child, GA_ROOT);
  RECT owner_place = {};
  GetWindowRect(owner, &owner_place);
  if (at_rest && GetForegroundWindow() == last_foreground && EqualRect(&last_place, &owner_place) &&
      is_same(now, find_placement(child, owner)))
    return;
  on_window_thread(bring_on_window_thread, child);
}

HDC host_hdc(HDC hdc) {
  HDC hosts = first == nullptr ? nullptr : stand_in_hdc(WindowFromDC(hdc));
  return hosts == nullptr ? hdc : hosts;
}
