#include "binding.h"

#include <atomic>
#include <cstdlib>

#include "host.h"
#include "host_turns.h"
#include "report.h"
#include "spare_window.h"
#include "stand_in.h"

namespace {

constexpr DWORD no_slot = TLS_OUT_OF_INDEXES;
constexpr DWORD patience = 250;  // ms

DWORD state_slot = no_slot;
std::atomic<unsigned long long> switch_count;
void (*settle_binding)(context* c);

void set_bound(thread_state* thread, bool bound) {
  TlsSetValue(driver_bound_slot, bound ? thread : nullptr);
}

BOOL host_make_current(HDC draw, HDC read, HGLRC hglrc) {
  switch_count.fetch_add(1, std::memory_order_relaxed);
  if (draw == read) return host_wgl_entry<wglMakeCurrent_op>()(draw, hglrc);
  return host_wgl_entry<wglMakeContextCurrentARB_op>()(draw, read, hglrc);
}

// Gives up what the host has current on this thread.
BOOL release_real(thread_state* thread) {
  set_bound(thread, false);
  if (!thread->real) return TRUE;
  const BOOL result = host_make_current(nullptr, nullptr, nullptr);
  set_holder(thread->real, 0);
  thread->real = nullptr;
  return result;
}

// A window is drawn to for as long as it lives, also when its application gave the device context back.
HDC lasting_hdc(const drawable& target, drawable& borrowed) {
  if (HDC hdc = stand_in_hdc(target.hwnd)) return hdc;
  if (!target.hwnd || WindowFromDC(target.hdc) == target.hwnd) return target.hdc;
  if (borrowed.hwnd != target.hwnd) {
    if (borrowed.hdc) ReleaseDC(borrowed.hwnd, borrowed.hdc);
    borrowed = {GetDC(target.hwnd), target.hwnd};
  }
  return borrowed.hdc;
}

bool is_same_drawable(const drawable& a, const drawable& b) {
  return a.hdc == b.hdc && a.hwnd == b.hwnd;
}

// Whether the host may still draw at an old size. A context that is spared but for what it counts has no other swaps.
bool is_resized(context* c) {
  if (!c->spared) return take_resized(c->draw.hwnd);
  RECT client;
  if (!c->counts_samples || !GetClientRect(c->draw.hwnd, &client)) return false;
  const SIZE size = {client.right, client.bottom};
  const bool resized = size.cx != c->counted_size.cx || size.cy != c->counted_size.cy;
  c->counted_size = size;
  return resized;
}

BOOL make_current_on(context* c, HDC draw, HDC read) {
  if (!draw || !host_make_current(draw, read, c->hglrc)) return FALSE;
  c->host_draw = draw;
  c->host_read = read;
  settle_size(c);
  return TRUE;
}

// The host's device contexts are looked up only after a change, or when those of the last time are gone.
BOOL make_real(context* c) {
  if (!c->stale && make_current_on(c, c->host_draw, c->host_read)) return TRUE;
  if (c->spared && !c->counts_samples) {
    HDC spare = spare_hdc(c);
    if (make_current_on(c, spare, spare)) return TRUE;
  }
  HDC draw = lasting_hdc(c->draw, c->borrowed);
  return make_current_on(c, draw, is_same_drawable(c->draw, c->read) ? draw : host_hdc(c->read.hdc));
}

bool is_alive(const drawable& target) {
  return target.hwnd ? IsWindow(target.hwnd) : GetObjectType(target.hdc) != 0;
}

// Hosts refuse what they take a moment later: one of two threads that bind at the same time, or any during a change of
// the display's mode.
bool make_real_patiently(context* c) {
  const DWORD start = GetTickCount();
  while (!make_real(c)) {
    if (c->refusal_known || !is_alive(c->draw) || GetTickCount() - start >= patience) return false;
    Sleep(1);
  }
  return true;
}

void report_refusal(const context* c, const char* why) {
  report("context %p cannot be made current on the host: %s, error %lu", static_cast<void*>(c->hglrc), why,
         GetLastError());
}

void refuse(thread_state* thread, const char* why) {
  report_refusal(thread->current, why);
  release_real(thread);
  thread->refused = true;
}

// It is the context's, since one thread may draw with several in turn.
void note_refusal(thread_state* thread) {
  context* c = thread->current;
  if (!c->refusal_known) report_refusal(c, "the host refused");
  release_real(thread);
  c->refused = c->refusal_known = true;
}

// The host's turn, when what it has is not what the thread noted.
bool realize(thread_state* thread) {
  context* c = thread->current;
  if (!c->hglrc) {
    refuse(thread, "it was deleted");
    return false;
  }
  const DWORD holder = holder_of(c);
  if (holder != 0 && holder != thread->id) {
    refuse(thread, "another thread uses it");
    return false;
  }
  if (!make_real_patiently(c)) {
    note_refusal(thread);
    return false;
  }
  c->refusal_known = false;
  if (thread->real && thread->real != c) set_holder(thread->real, 0);
  thread->real = c;
  set_holder(c, thread->id);
  c->stale = false;
  return true;
}

void note_drawables(context* c, HDC draw, HDC read) {
  const drawable new_draw = {draw, WindowFromDC(draw)};
  const drawable new_read = read == draw ? new_draw : drawable{read, WindowFromDC(read)};
  const bool is_same = is_same_drawable(new_draw, c->draw) && is_same_drawable(new_read, c->read);
  if (!is_same || c->spared) c->stale = true;
  if (!is_same) {
    c->refusal_known = c->has_share = false;
    c->cut_pending = true;
  }
  c->refused = false;
  note_first_drawable(c, new_draw.hwnd);
  c->draw = new_draw;
  c->read = new_read;
  c->spared = false;
}

// The host refuses a drawable without a pixel format at once, and so must a binding that is only noted.
bool has_pixel_format(HDC hdc, int* format) {
  *format = host_wgl_entry<wglGetPixelFormat_op>()(host_hdc(hdc));
  if (*format != 0) return true;
  SetLastError(GetObjectType(hdc) == 0 ? ERROR_INVALID_HANDLE : ERROR_INVALID_PIXEL_FORMAT);
  return false;
}

// Whether the host would take the pair. It is asked itself where the formats alone do not tell.
bool is_acceptable(thread_state* thread, context* c, HDC draw, HDC read) {
  int draw_format = 0, read_format = 0;
  if (!has_pixel_format(draw, &draw_format)) return false;
  if (read != draw && !has_pixel_format(read, &read_format)) return false;
  if (read == draw && draw_format == c->pixel_format) return true;
  release_real(thread);
  const BOOL accepted = host_make_current(host_hdc(draw), host_hdc(read), c->hglrc);
  const DWORD error = GetLastError();
  host_make_current(nullptr, nullptr, nullptr);
  SetLastError(error);
  return accepted;
}

BOOL note_none(thread_state* thread, HDC hdc) {
  if (thread->owned) drop_ownership(thread->owned);
  const bool had_one = thread->current != nullptr;
  thread->owned = thread->current = nullptr;
  if (thread->real) return release_real(thread);
  return had_one ? TRUE : host_wgl_entry<wglMakeCurrent_op>()(hdc, nullptr);
}

void set_current(thread_state* thread, context* c) {
  thread->current = c;
  thread->refused = false;
  set_bound(thread, thread->real == c && !c->stale);
}

// A context that came about in a way that the driver does not know.
context* adopt(HGLRC hglrc) {
  context* c = register_context(hglrc, 0);
  if (!c) SetLastError(ERROR_NOT_ENOUGH_MEMORY);
  return c;
}

}  // namespace

DWORD driver_bound_slot = no_slot;

bool start_bindings(void (*settle)(context*)) {
  settle_binding = settle;
  state_slot = TlsAlloc();
  driver_bound_slot = TlsAlloc();
  return state_slot != no_slot && driver_bound_slot != no_slot;
}

void stop_bindings() {
  TlsFree(state_slot);
  TlsFree(driver_bound_slot);
}

void end_thread_binding() {
  auto* thread = static_cast<thread_state*>(TlsGetValue(state_slot));
  if (!thread) return;
  if (thread->owned) drop_ownership(thread->owned);
  release_real(thread);
  TlsSetValue(state_slot, nullptr);
  free(thread);
}

thread_state* this_thread() {
  auto* thread = static_cast<thread_state*>(TlsGetValue(state_slot));
  if (thread) return thread;
  load_host();
  thread = static_cast<thread_state*>(calloc(1, sizeof(thread_state)));
  if (!thread) return nullptr;
  thread->id = GetCurrentThreadId();
  TlsSetValue(state_slot, thread);
  return thread;
}

thread_state* bind_current() {
  thread_state* thread = this_thread();
  if (!thread || !thread->current || thread->refused || thread->current->refused) return nullptr;
  context* c = thread->current;
  if (thread->real != c || c->stale) {
    if (!realize(thread)) return nullptr;
    take_turns_if_needed();
    set_bound(thread, true);
    settle_binding(c);
  }
  return thread;
}

extern "C" bool driver_bind_for_call() {
  if (bind_current()) return true;
  const thread_state* thread = this_thread();
  return thread && !thread->current;
}

context* refused_context() {
  const thread_state* thread = this_thread();
  return thread && thread->current && thread->current->refused ? thread->current : nullptr;
}

void retry_refused() {
  if (context* c = refused_context()) c->refused = false;
}

BOOL note_binding(HDC draw, HDC read, HGLRC hglrc) {
  thread_state* thread = this_thread();
  if (!thread) return FALSE;
  if (!hglrc) return note_none(thread, draw);
  context* c = find_context(hglrc);
  const bool adopted = !c;
  if (adopted && !(c = adopt(hglrc))) return FALSE;
  const DWORD owner = owner_of(c);
  if (owner != 0 && owner != thread->id) {
    SetLastError(ERROR_BUSY);
    return FALSE;
  }
  if (!is_acceptable(thread, c, draw, read)) {
    if (adopted) unregister_context(c);
    return FALSE;
  }
  if (!take_ownership(c, thread->owned == c ? nullptr : thread->owned, thread->id)) {
    SetLastError(ERROR_BUSY);
    return FALSE;
  }
  thread->owned = c;
  // A window may have become a child after it got its pixel format.
  make_stand_in(WindowFromDC(draw), c->pixel_format, nullptr);
  // Another thread may bind what this one has left behind.
  if (thread->real != c) release_real(thread);
  note_drawables(c, draw, read);
  set_current(thread, c);
  return TRUE;
}

BOOL switch_to(context* c) {
  thread_state* thread = this_thread();
  if (!thread || !c) return FALSE;
  if (thread->current == c && !thread->refused) return TRUE;
  if (!c->hglrc || !c->draw.hdc) {
    report("a switch to a context that is deleted or was never bound");
    return FALSE;
  }
  const DWORD holder = holder_of(c);
  if (holder != 0 && holder != thread->id) {
    report("a switch to context %p, which thread %lu uses", static_cast<void*>(c->hglrc), holder);
    return FALSE;
  }
  set_current(thread, c);
  return TRUE;
}

void forget_context(context* c) {
  thread_state* thread = this_thread();
  if (!thread) return;
  if (thread->owned == c) {
    drop_ownership(c);
    thread->owned = nullptr;
  }
  if (thread->real == c || thread->current == c) release_real(thread);
  if (thread->current == c) thread->current = nullptr;
}

void settle_size(context* c) {
  if (is_resized(c)) host_wgl_entry<wglSwapBuffers_op>()(c->host_draw);
}

void unsettle_drawables(thread_state* thread) {
  thread->current->stale = true;
  thread->current->refused = false;
  set_bound(thread, false);
}

void give_up_real() {
  if (thread_state* thread = this_thread()) release_real(thread);
}

unsigned long long driver_OswDriverSwitchCount() {
  return switch_count.load(std::memory_order_relaxed);
}
