// The wgl functions that are more than a call of the host's.
#include "binding.h"
#include "host.h"
#include "names.h"
#include "own_ops.h"
#include "path_sign.h"
#include "scissor_cut.h"
#include "spare_window.h"
#include "spread_process.h"
#include "stand_in.h"
#include "window_share.h"

namespace {

constexpr UINT most_swaps = 16;

HGLRC enter_context(HDC hdc, HGLRC hglrc) {
  if (!hglrc) return nullptr;
  if (register_context(hglrc, host_wgl_entry<wglGetPixelFormat_op>()(host_hdc(hdc)))) return hglrc;
  host_wgl_entry<wglDeleteContext_op>()(hglrc);
  SetLastError(ERROR_NOT_ENOUGH_MEMORY);
  return nullptr;
}

bool is_used_elsewhere(const context* c, DWORD thread) {
  const DWORD owner = owner_of(c), holder = holder_of(c);
  return (owner != 0 && owner != thread) || (holder != 0 && holder != thread);
}

bool is_drawn_to(const thread_state* thread, HDC hdc) {
  const context* c = thread ? thread->current : nullptr;
  if (!c) return false;
  return c->draw.hdc == hdc || (c->draw.hwnd && c->draw.hwnd == WindowFromDC(hdc));
}

// Lets `swap` show what the host swaps for a device context of the application, if there is anything to show. A context
// that draws there must be the host's current one, which alone the host flushes.
template <class Swap>
BOOL swap_on_host(HDC hdc, Swap swap) {
  const thread_state* thread = this_thread();
  catch_up(WindowFromDC(hdc));
  if (!is_drawn_to(thread, hdc)) return swap(host_hdc(hdc));
  retry_refused();
  if (!bind_current()) return FALSE;
  look_at_share(thread->current);
  const context* c = thread->current;
  if (!c->spared) return swap(c->host_draw);
  // Of a window that is gone the host says why it is not swapped.
  if (c->draw.hwnd && !IsWindow(c->draw.hwnd)) return swap(hdc);
  host_gl_entry<glFlush_op>()();
  return TRUE;
}

HDC current_hdc(drawable context::*which) {
  const thread_state* thread = this_thread();
  return thread && thread->current ? (thread->current->*which).hdc : nullptr;
}

}  // namespace

HGLRC own_call<wglCreateContext_op>::call(HDC hdc) {
  load_host();
  note_creation(hdc);
  return enter_context(hdc, host_wgl_entry<wglCreateContext_op>()(host_hdc(hdc)));
}

HGLRC own_call<wglCreateLayerContext_op>::call(HDC hdc, int layer) {
  load_host();
  note_creation(hdc);
  return enter_context(hdc, host_wgl_entry<wglCreateLayerContext_op>()(host_hdc(hdc), layer));
}

HGLRC own_call<wglCreateContextAttribsARB_op>::call(HDC hdc, HGLRC share, const int* attributes) {
  load_host();
  note_creation(hdc);
  return enter_context(hdc, host_wgl_entry<wglCreateContextAttribsARB_op>()(host_hdc(hdc), share, attributes));
}

BOOL own_call<wglCopyContext_op>::call(HGLRC source, HGLRC destination, UINT mask) {
  load_host();
  const BOOL result = host_wgl_entry<wglCopyContext_op>()(source, destination, mask);
  const context* from = find_context(source);
  context* to = find_context(destination);
  if (result && from && to) copy_cut(to, from, mask);
  return result;
}

BOOL own_call<wglDeleteContext_op>::call(HGLRC hglrc) {
  load_host();
  context* c = find_context(hglrc);
  if (!c) return host_wgl_entry<wglDeleteContext_op>()(hglrc);
  if (is_used_elsewhere(c, GetCurrentThreadId())) {
    SetLastError(ERROR_BUSY);
    return FALSE;
  }
  forget_context(c);
  if (!host_wgl_entry<wglDeleteContext_op>()(hglrc)) return FALSE;
  destroy_spare_window(c);
  if (c->borrowed.hdc) ReleaseDC(c->borrowed.hwnd, c->borrowed.hdc);
  unregister_context(c);
  return TRUE;
}

HGLRC own_call<wglGetCurrentContext_op>::call() {
  const thread_state* thread = this_thread();
  return thread && thread->current ? thread->current->hglrc : nullptr;
}

HDC own_call<wglGetCurrentDC_op>::call() {
  return current_hdc(&context::draw);
}

HDC own_call<wglGetCurrentReadDCARB_op>::call() {
  return current_hdc(&context::read);
}

HDC own_call<wglGetCurrentReadDCEXT_op>::call() {
  return current_hdc(&context::read);
}

PROC own_call<wglGetDefaultProcAddress_op>::call(LPCSTR name) {
  return find_entry(name);
}

PROC own_call<wglGetProcAddress_op>::call(LPCSTR name) {
  return find_entry(name);
}

BOOL own_call<wglMakeCurrent_op>::call(HDC hdc, HGLRC hglrc) {
  if (hglrc) note_drawing_thread(hdc);
  return note_binding(hdc, hdc, hglrc);
}

BOOL own_call<wglMakeContextCurrentARB_op>::call(HDC draw, HDC read, HGLRC hglrc) {
  return note_binding(draw, read, hglrc);
}

BOOL own_call<wglMakeContextCurrentEXT_op>::call(HDC draw, HDC read, HGLRC hglrc) {
  return note_binding(draw, read, hglrc);
}

BOOL own_call<wglSetPixelFormat_op>::call(HDC hdc, int format, const PIXELFORMATDESCRIPTOR* descriptor) {
  thread_state* thread = this_thread();
  if (!thread || thread->depth >= deepest_call) return FALSE;
  ++thread->depth;
  make_stand_in(WindowFromDC(hdc), format, descriptor);
  const BOOL result = host_wgl_entry<wglSetPixelFormat_op>()(host_hdc(hdc), format, descriptor);
  --thread->depth;
  return result;
}

BOOL own_call<wglSwapBuffers_op>::call(HDC hdc) {
  return swap_on_host(hdc, [](HDC shown) { return host_wgl_entry<wglSwapBuffers_op>()(shown); });
}

BOOL own_call<wglSwapLayerBuffers_op>::call(HDC hdc, UINT planes) {
  return swap_on_host(hdc, [planes](HDC shown) { return host_wgl_entry<wglSwapLayerBuffers_op>()(shown, planes); });
}

// One by one, as each may need a binding of its own; bit i of the result is set when swap i succeeded.
DWORD own_call<wglSwapMultipleBuffers_op>::call(UINT count, const WGLSWAP* swaps) {
  if (count > most_swaps) return 0;
  DWORD swapped = 0;
  for (UINT i = 0; i < count; ++i) {
    if (own_call<wglSwapLayerBuffers_op>::call(swaps[i].hdc, swaps[i].uiFlags)) swapped |= 1u << i;
  }
  return swapped;
}

// Makes the driver context `driver_context` the calling thread's, on the drawable that it was last bound to, even while
// another thread owns it. The second argument is 0. False, with no change, when that cannot be; see binding.h.
BOOL own_call<wglFastSwitchContextZ4_op>::call(HANDLE driver_context, UINT) {
  note_switching();
  return switch_to(static_cast<context*>(driver_context));
}

// The driver context of a context, or null. It is valid until the context is deleted.
HANDLE own_call<wglGetGLContextZ4_op>::call(HGLRC hglrc) {
  return find_context(hglrc);
}
