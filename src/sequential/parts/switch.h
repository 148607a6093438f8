// Repeating work on every part from the application's own thread, by the driver's fast switch of contexts.
#pragma once

#include "startup/config/monitors.h"
#include "wgl/records/glrc.h"

// Makes a driver context current on the calling thread, whoever else counts as its owner. The result is of no use.
inline void __osw_switch_to(const __osw_thread_state* state, HANDLE driver_context) {
  sys_wgl<wglFastSwitchContextZ4_op>(state)(driver_context, 0);
}

inline void __osw_switch_to_part(const __osw_thread_state* state, i32 part) {
  __osw_switch_to(state, state->glrc->child_gl_context[part]);
}

inline void __osw_switch_to_app(const __osw_thread_state* state) {
  __osw_switch_to(state, state->glrc->app_gl_context);
}

// Calls `work` with each part's number in ascending order while that part's context is current; afterwards the
// application's own is. On the sequential path only.
template <class Work>
inline void __osw_for_each_part(const __osw_thread_state* state, Work work) {
  for (i32 part = 0; part < __osw_part_count; ++part) {
    __osw_switch_to_part(state, part);
    work(part);
  }
  __osw_switch_to_app(state);
}
