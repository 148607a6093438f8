#include "wgl_entries.h"

#include "extension_names.h"
#include "names.h"
#include "spare_window.h"
#include "window_coordinates.h"

namespace {

constexpr UINT most_swaps = 16;

HGLRC enter(HDC hdc, HGLRC hglrc) {
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

// What the host swaps for a device context of the application; null when there is nothing to show. A context that draws
// there must be the host's current one, which alone the host flushes.
HDC prepare_swap(HDC hdc) {
  const thread_state* thread = this_thread();
  catch_up(WindowFromDC(hdc));
  if (!is_drawn_to(thread, hdc)) return host_hdc(hdc);
  if (!bind_current()) return host_hdc(hdc);
  if (!thread->current->spared) return thread->current->host_draw;
  host_gl_entry<glFlush_op>()();
  return nullptr;
}

HDC current_hdc(drawable context::*which) {
  const thread_state* thread = this_thread();
  return thread && thread->current ? (thread->current->*which).hdc : nullptr;
}

}  // namespace

OWN_WGL_ENTRY(wglCreateContext, HGLRC, HDC hdc) {
  load_host();
  return enter(hdc, host_wgl_entry<wglCreateContext_op>()(host_hdc(hdc)));
}

OWN_WGL_ENTRY(wglCreateLayerContext, HGLRC, HDC hdc, int layer) {
  load_host();
  return enter(hdc, host_wgl_entry<wglCreateLayerContext_op>()(host_hdc(hdc), layer));
}

OWN_WGL_ENTRY(wglCopyContext, BOOL, HGLRC source, HGLRC destination, UINT mask) {
  load_host();
  const BOOL result = host_wgl_entry<wglCopyContext_op>()(source, destination, mask);
  const context* from = find_context(source);
  context* to = find_context(destination);
  if (result && from && to) copy_offsets(to, from, mask);
  return result;
}

OWN_WGL_ENTRY(wglDeleteContext, BOOL, HGLRC hglrc) {
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

OWN_WGL_ENTRY(wglGetCurrentContext, HGLRC) {
  const thread_state* thread = this_thread();
  return thread && thread->current ? thread->current->hglrc : nullptr;
}

OWN_WGL_ENTRY(wglGetCurrentDC, HDC) {
  return current_hdc(&context::draw);
}

OWN_WGL_ENTRY(wglGetCurrentReadDCARB, HDC) {
  return current_hdc(&context::read);
}

OWN_WGL_ENTRY(wglGetCurrentReadDCEXT, HDC) {
  return current_hdc(&context::read);
}

OWN_WGL_ENTRY(wglGetDefaultProcAddress, PROC, LPCSTR name) {
  return find_entry(name);
}

OWN_WGL_ENTRY(wglGetProcAddress, PROC, LPCSTR name) {
  return find_entry(name);
}

OWN_WGL_ENTRY(wglMakeCurrent, BOOL, HDC hdc, HGLRC hglrc) {
  return note_binding(hdc, hdc, hglrc);
}

OWN_WGL_ENTRY(wglMakeContextCurrentARB, BOOL, HDC draw, HDC read, HGLRC hglrc) {
  return note_binding(draw, read, hglrc);
}

OWN_WGL_ENTRY(wglMakeContextCurrentEXT, BOOL, HDC draw, HDC read, HGLRC hglrc) {
  return note_binding(draw, read, hglrc);
}

OWN_WGL_ENTRY(wglSetPixelFormat, BOOL, HDC hdc, int format, const PIXELFORMATDESCRIPTOR* descriptor) {
  thread_state* thread = this_thread();
  if (!thread || thread->depth >= deepest) return FALSE;
  ++thread->depth;
  make_stand_in(WindowFromDC(hdc), format, descriptor);
  const BOOL result = host_wgl_entry<wglSetPixelFormat_op>()(host_hdc(hdc), format, descriptor);
  --thread->depth;
  return result;
}

OWN_WGL_ENTRY(wglSwapBuffers, BOOL, HDC hdc) {
  HDC shown = prepare_swap(hdc);
  return shown ? host_wgl_entry<wglSwapBuffers_op>()(shown) : TRUE;
}

OWN_WGL_ENTRY(wglSwapLayerBuffers, BOOL, HDC hdc, UINT planes) {
  HDC shown = prepare_swap(hdc);
  return shown ? host_wgl_entry<wglSwapLayerBuffers_op>()(shown, planes) : TRUE;
}

// One by one, as each may need a binding of its own; bit i of the result is set when swap i succeeded.
OWN_WGL_ENTRY(wglSwapMultipleBuffers, DWORD, UINT count, const WGLSWAP* swaps) {
  if (count > most_swaps) return 0;
  DWORD swapped = 0;
  for (UINT i = 0; i < count; ++i) {
    if (forward_wgl<wglSwapLayerBuffers_op, BOOL>(swaps[i].hdc, swaps[i].uiFlags)) swapped |= 1u << i;
  }
  return swapped;
}

OWN_WGL_ENTRY(wglGetExtensionsStringARB, const char*, HDC hdc) {
  load_host();
  return offered_extensions(host_wgl_entry<wglGetExtensionsStringARB_op>()(host_hdc(hdc)));
}

OWN_WGL_ENTRY(wglGetExtensionsStringEXT, const char*) {
  bind_current();
  return offered_extensions(host_wgl_entry<wglGetExtensionsStringEXT_op>()());
}

// Not offered; see extension_names.cpp.
OWN_WGL_ENTRY(wglCreateContextAttribsARB, HGLRC, HDC, HGLRC, const int*) {
  return nullptr;
}

OWN_WGL_ENTRY(wglFastSwitchContextZ4, BOOL, HANDLE driver_context, UINT) {
  return switch_to(static_cast<context*>(driver_context));
}

OWN_WGL_ENTRY(wglGetGLContextZ4, HANDLE, HGLRC hglrc) {
  return find_context(hglrc);
}
