#include "stand_in.h"

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
};

// The list is changed on the window thread alone, under the lock; another thread holds the lock for a look-up, and
// keeps no pointer. No window is touched under it.
SRWLOCK lock = SRWLOCK_INIT;
stand_in* first;

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

// A hidden stand-in stays where it is, but has the child's size, which is what the host draws in. The list may have
// changed on return: while the thread waits for another's window it takes messages.
void place(stand_in* s, const placement& wanted) {
  const placement before = s->now;
  s->now = wanted;
  HWND hwnd = s->hwnd;
  const LONG width = wanted.place.right - wanted.place.left, height = wanted.place.bottom - wanted.place.top;
  UINT flags = SWP_NOZORDER | SWP_NOOWNERZORDER | SWP_NOACTIVATE;
  if (wanted.visible != before.visible) flags |= wanted.visible ? SWP_SHOWWINDOW : SWP_HIDEWINDOW;
  if (!wanted.visible) flags |= SWP_NOMOVE;
  // This Wine restacks a window on the screen only when nothing visible is above it, so one that comes into view goes
  // to the top: else it would stay below the application's window, which may have been raised since.
  if (wanted.visible && !before.visible) flags &= ~static_cast<UINT>(SWP_NOZORDER);
  SetWindowPos(hwnd, HWND_TOP, wanted.place.left, wanted.place.top, width > 0 ? width : 1, height > 0 ? height : 1,
               flags);
  if (wanted.visible && !EqualRect(&wanted.part, &before.part)) clip(hwnd, wanted);
}

void destroy(stand_in* s) {
  AcquireSRWLockExclusive(&lock);
  stand_in** link = &first;
  while (*link != s) link = &(*link)->next;
  *link = s->next;
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
    follow(s);
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

// Above the top window and the stand-ins that it has, so that a child of a child covers it, and below its dialogs.
void order(HWND hwnd, HWND owner) {
  HWND top = owner;
  for (HWND above = owner; (above = GetWindow(above, GW_HWNDPREV)) != nullptr;) {
    if (above == hwnd) continue;
    if (find_by_window(above) == nullptr) break;
    top = above;
  }
  HWND after = GetWindow(top, GW_HWNDPREV);
  if (after == hwnd) return;
  SetWindowPos(hwnd, after == nullptr ? HWND_TOP : after, 0, 0, 0, 0,
               SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE | SWP_NOOWNERZORDER);
}

// What was uncovered is the child's to draw.
LRESULT CALLBACK stand_in_procedure(HWND hwnd, UINT message, WPARAM first_word, LPARAM second_word) {
  switch (message) {
    case WM_PAINT: {
      RECT uncovered;
      const bool any = GetUpdateRect(hwnd, &uncovered, FALSE);
      ValidateRect(hwnd, nullptr);
      const stand_in* s = find_by_window(hwnd);
      if (any && s != nullptr) InvalidateRect(s->child, &uncovered, FALSE);
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
  order(s->hwnd, s->owner);
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
  if (child == nullptr || !is_under_wine() || !is_child(child)) return;
  request r = {child, pixel_format, descriptor};
  on_window_thread(make_on_window_thread, &r);
}

HDC stand_in_hdc(HWND child) {
  if (child == nullptr || !is_under_wine()) return nullptr;
  AcquireSRWLockShared(&lock);
  const stand_in* s = find(child);
  HDC hdc = s == nullptr ? nullptr : s->hdc;
  ReleaseSRWLockShared(&lock);
  return hdc;
}
