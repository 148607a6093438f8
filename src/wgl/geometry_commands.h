// Telling the parts where the window stands in their drawables, and how large it is. On the thread that renders; each
// does nothing on a thread without a context.
#pragma once

#include "dispatch/path.h"
#include "wgl/records/glrc.h"

// The origin of the application's client area in each part's drawable.
inline void __osw_send_viewport_offset(__osw_thread_state* state) {
  state->path->send_viewport_offset(state);
}

// The size of the application's client area, to every part; the application's own context is told that nobody sees it.
inline void __osw_send_drawable_size(__osw_thread_state* state) {
  state->path->send_drawable_size(state);
}

// A context's first viewport, the whole client area: once in its life, where the child window's size would stand
// otherwise. A null `glrc` is passed over.
inline void __osw_send_initial_viewport(__osw_thread_state* state, __osw_glrc* glrc) {
  if (!glrc || glrc->viewport_set) return;
  state->path->send_viewport(state);
  glrc->viewport_set = 1;
}
