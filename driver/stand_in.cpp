#include "stand_in.h"

#include <atomic>
#include <cstdlib>

#include "host.h"
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

struct stand_in {
  stand_in* next;
  HWND child;
  HWND owner;  // the child's top window
  HWND hwnd;
  HDC hdc;
  WNDPROC child_procedure;  // the one that ours replaced
  placement now;
  unsigned looked_at;
  bool raised;  // shown since the last look, and so above all others
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

void clip(HWND hwnd, const placement& wanted) {
  const RECT whole = {0, 0, wanted.place.right - wanted.place.left, wanted.place.bottom - wanted.place.top};
  SetWindowRgn(hwnd, EqualRect(&wanted.part, &whole) ? nullptr : CreateRectRgnIndirect(&wanted.part), TRUE);
}

bool is_owned_by(HWND hwnd, HWND owner) {
  while (hwnd != nullptr && hwnd != owner) hwnd = GetWindow(hwnd, GW_OWNER);
  return hwnd != nullptr;
}

// Whether a window belongs above the stand-in of `child`: another for a child of that child, or a dialog of the owner.
bool belongs_above(HWND hwnd, HWND child, HWND owner) {
  if (!IsWindowVisible(hwnd)) return false;
  const stand_in* other = find_by_window(hwnd);
  return other != nullptr ? IsChild(child, other->child) : is_owned_by(hwnd, owner);
}

// A window that is shown comes to the front, and Wine can move none but to the front. So what belongs above a stand-in
// is moved there after it, from the lowest up; without a wait, for it is the application's. Not at once: Wine first has
// to hear from the X server that the stand-in is in front.
void raise_above(const stand_in& s) {
  constexpr int most = 64;
  HWND above[most];
  int count = 0;
  for (HWND at = s.owner; (at = GetWindow(at, GW_HWNDPREV)) != nullptr && count < most;) {
    if (at != s.hwnd && belongs_above(at, s.child, s.owner)) above[count++] = at;
  }
  for (int i = 0; i < count; ++i) {
    SetWindowPos(above[i], HWND_TOP, 0, 0, 0, 0,
                 SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE | SWP_NOOWNERZORDER | SWP_ASYNCWINDOWPOS);
  }
}

// A hidden stand-in stays where it is, but has the child's size, which is what the host draws in. The list may have
// changed on return: while the thread waits for another's window it takes messages.
void place(stand_in* s, const placement& wanted) {
  const placement before = s->now;
  s->now = wanted;
  HWND hwnd = s->hwnd;
  const LONG width = wanted.place.right - wanted.place.left, height = wanted.place.bottom - wanted.place.top;
  if (wanted.visible && !before.visible) s->raised = true;
  UINT flags = SWP_NOZORDER | SWP_NOOWNERZORDER | SWP_NOACTIVATE;
  if (wanted.visible != before.visible) flags |= wanted.visible ? SWP_SHOWWINDOW : SWP_HIDEWINDOW;
  if (!wanted.visible) flags |= SWP_NOMOVE;
  SetWindowPos(hwnd, nullptr, wanted.place.left, wanted.place.top, width > 0 ? width : 1, height > 0 ? height : 1,
               flags);
  if (wanted.visible && !EqualRect(&wanted.part, &before.part)) clip(hwnd, wanted);
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

void follow(stand_in* s) {
  if (!IsWindow(s->child)) {
    destroy(s);
    return;
  }
  HWND owner = GetAncestor(s->child, GA_ROOT);
  if (owner != s->owner) {
    s->owner = owner;
    SetWindowLongPtrA(s->hwnd, GWLP_HWNDPARENT, reinterpret_cast<LONG_PTR>(owner));
  }
  const placement wanted = find_placement(s->child, owner);
  const bool same = wanted.visible == s->now.visible && EqualRect(&wanted.place, &s->now.place) &&
                    EqualRect(&wanted.part, &s->now.part);
  if (!same) place(s, wanted);
}

// Each round starts at the front: the list may have changed meanwhile. What was looked at in this round is passed over.
void follow_all() {
  static unsigned round;
  ++round;
  for (stand_in* s = first; s != nullptr;) {
    if (s->looked_at == round) {
      s = s->next;
      continue;
    }
    s->looked_at = round;
    if (s->raised) {
      s->raised = false;
      raise_above(*s);
    } else {
      follow(s);
    }
    s = first;
  }
}

void follow_on_window_thread(void* child) {
  if (stand_in* s = find(static_cast<HWND>(child))) follow(s);
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

HDC host_hdc(HDC hdc) {
  HDC hosts = first == nullptr ? nullptr : stand_in_hdc(WindowFromDC(hdc));
  return hosts == nullptr ? hdc : hosts;
}
