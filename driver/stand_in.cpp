#include "stand_in.h"

#include <cstdlib>

#include "host.h"
#include "llvmpipe.h"
#include "part_window.h"
#include "report.h"
#include "stand_in_place.h"
#include "stand_in_procedures.h"
#include "stand_in_raise.h"
#include "window_order.h"
#include "window_thread.h"
#include "wine.h"
#include "x_errors.h"

namespace {

// How often the window thread looks where the children are. Changes of a child itself are seen at once.
constexpr UINT look_interval = 20;  // ms

constexpr char stand_in_class[] = "osw_driver_stand_in";
constexpr DWORD extended_style = WS_EX_NOACTIVATE | WS_EX_TOOLWINDOW | WS_EX_TRANSPARENT | WS_EX_LAYERED;

bool is_child(HWND hwnd) {
  return GetAncestor(hwnd, GA_PARENT) != GetDesktopWindow();
}

struct request {
  HWND child;
  int pixel_format;
  const PIXELFORMATDESCRIPTOR* descriptor;
};

bool make_popup(stand_in* s, const request& r) {
  s->hwnd = CreateWindowExA(extended_style, stand_in_class, "", WS_POPUP | WS_DISABLED, 0, 0, 1, 1, s->owner, nullptr,
                            nullptr, nullptr);
  if (!s->hwnd) return false;
  share_input(s->owner);
  // A layered window is not shown before it has its attributes; that it is layered lets the mouse through.
  SetLayeredWindowAttributes(s->hwnd, 0, 255, LWA_ALPHA);
  s->hdc = GetDC(s->hwnd);
  if (!host_wgl_entry<wglSetPixelFormat_op>()(s->hdc, r.pixel_format, r.descriptor)) return false;
  prepare_to_await_errors(s->hdc, r.pixel_format);
  keep_host_memory(s->hdc);
  return true;
}

// The child clips it. Its thread, which may wait for the caller, is told nothing of it.
bool make_inside(stand_in* s, const request& r) {
  s->hwnd = CreateWindowExA(WS_EX_NOPARENTNOTIFY, stand_in_class, "", WS_CHILD | WS_VISIBLE | WS_DISABLED, 0, 0, 1, 1,
                            r.child, nullptr, nullptr, nullptr);
  if (!s->hwnd) return false;
  s->hdc = GetDC(s->hwnd);
  PIXELFORMATDESCRIPTOR descriptor{};
  host_wgl_entry<wglDescribePixelFormat_op>()(s->hdc, r.pixel_format, sizeof descriptor, &descriptor);
  return host_wgl_entry<wglSetPixelFormat_op>()(s->hdc, r.pixel_format, &descriptor);
}

bool make_window(stand_in* s, const request& r) {
  s->owner = GetAncestor(r.child, GA_ROOT);
  s->inside = !is_under_wine();
  if (s->inside ? make_inside(s, r) : make_popup(s, r)) return true;
  if (s->hwnd) DestroyWindow(s->hwnd);
  return false;
}

void look_again() {
  follow_all();
  if (is_under_wine()) look_for_disorder();
}

void enter(stand_in* s) {
  if (!first_stand_in) repeat_on_window_thread(look_again, look_interval);
  AcquireSRWLockExclusive(&stand_in_lock);
  hook_child(s);
  s->next = first_stand_in;
  first_stand_in = s;
  ReleaseSRWLockExclusive(&stand_in_lock);
}

void make_stand_in_on_window_thread(void* argument) {
  const request& r = *static_cast<const request*>(argument);
  register_window_class(stand_in_class, stand_in_procedure);
  if (find_stand_in(r.child)) return;
  auto* s = static_cast<stand_in*>(calloc(1, sizeof(stand_in)));
  if (!s) return;
  s->child = r.child;
  s->settled = true;
  if (!make_window(s, r)) {
    report("no stand-in for child window %p, error %lu", static_cast<void*>(r.child), GetLastError());
    free(s);
    return;
  }
  s->is_part = is_part_window(r.child);
  enter(s);
  follow_child(s);
}

struct window_request {
  HWND child;
  const window_place* window;
  bool placed;
};

void place_on_window_thread(void* argument) {
  auto& r = *static_cast<window_request*>(argument);
  stand_in* s = find_stand_in(r.child);
  r.placed = s != nullptr;
  if (!s) return;
  AcquireSRWLockExclusive(&stand_in_lock);
  s->has_window = r.window != nullptr;
  if (r.window && !is_empty(r.window->size)) s->window = *r.window;
  ReleaseSRWLockExclusive(&stand_in_lock);
  follow_child(s);
}

bool is_same_window(const stand_in& s, const window_place* window) {
  if (!window || !s.has_window) return !window && !s.has_window;
  return s.window.x == window->x && s.window.y == window->y && s.window.size.cx == window->size.cx &&
         s.window.size.cy == window->size.cy;
}

struct catch_up_request {
  HWND child;
  unsigned rounds;  // that had begun before it was made
};

// Several threads that draw often ask at once, and one round does for all of them.
void catch_up_on_window_thread(void* argument) {
  const auto& r = *static_cast<catch_up_request*>(argument);
  if (!is_followed_since(r.rounds)) follow_all();
  if (const stand_in* s = find_stand_in(r.child)) raise_with(s);
  await_server();
}

void make_stand_in_now(HWND child, int pixel_format, const PIXELFORMATDESCRIPTOR* descriptor) {
  if (!child || !is_child(child) || stand_in_hdc(child)) return;
  if (is_under_wine()) watch_owner(GetAncestor(child, GA_ROOT));
  request r = {child, pixel_format, descriptor};
  on_window_thread(make_stand_in_on_window_thread, &r);
  await_errors();
}

}  // namespace

void make_stand_in(HWND child, int pixel_format, const PIXELFORMATDESCRIPTOR* descriptor) {
  if (is_under_wine()) make_stand_in_now(child, pixel_format, descriptor);
}

HDC stand_in_hdc(HWND child) {
  if (!child || !first_stand_in) return nullptr;
  AcquireSRWLockShared(&stand_in_lock);
  const stand_in* s = find_stand_in(child);
  HDC hdc = s ? s->hdc : nullptr;
  ReleaseSRWLockShared(&stand_in_lock);
  return hdc;
}

bool place_window(HWND child, int pixel_format, const window_place* window) {
  if (window && !is_under_wine()) make_stand_in_now(child, pixel_format, nullptr);
  if (!stand_in_hdc(child)) return !window;
  AcquireSRWLockShared(&stand_in_lock);
  const stand_in* s = find_stand_in(child);
  const bool is_there = s && is_same_window(*s, window);
  ReleaseSRWLockShared(&stand_in_lock);
  if (is_there) return true;
  window_request r = {child, window, false};
  on_window_thread(place_on_window_thread, &r);
  return r.placed;
}

bool take_resized(HWND child) {
  if (!child || !first_stand_in) return false;
  AcquireSRWLockShared(&stand_in_lock);
  stand_in* s = find_stand_in(child);
  const bool resized = s && s->size.exchange(sizing::known) == sizing::changed;
  ReleaseSRWLockShared(&stand_in_lock);
  return resized;
}

// The stand-ins of an owner that has moved lie over each other's new places, so all must have gone there. An owner that
// was activated lies over its stand-ins.
void catch_up(HWND child) {
  if (!child || !first_stand_in) return;
  AcquireSRWLockShared(&stand_in_lock);
  const stand_in* s = find_stand_in(child);
  const placement now = s ? s->now : placement{};
  const window_place window = s ? s->window : window_place{};
  const bool has_window = s && s->has_window;
  const RECT last_place = s ? s->owner_place : RECT{};
  const bool inside = s && s->inside;
  const bool at_rest = s && s->settled && s->raise != raising::stand_ins;
  ReleaseSRWLockShared(&stand_in_lock);
  if (!s || inside) return;
  HWND owner = GetAncestor(child, GA_ROOT);
  RECT owner_place{};
  GetWindowRect(owner, &owner_place);
  if (at_rest && !has_new_foreground() && EqualRect(&last_place, &owner_place) &&
      is_same_placement(now, find_placement(child, owner, has_window ? &window : nullptr)))
    return;
  catch_up_request r = {child, rounds_begun()};
  on_window_thread(catch_up_on_window_thread, &r);
}

HDC host_hdc(HDC hdc) {
  HDC hosts = first_stand_in ? stand_in_hdc(WindowFromDC(hdc)) : nullptr;
  return hosts ? hosts : hdc;
}
