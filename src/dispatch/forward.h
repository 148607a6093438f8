// The wgl handlers that do nothing of the wrapper's own, and the choice of a handler by the op list's word for it. Each
// of the two wgl tables is filled with this choice; a table brings its own handlers and the words that it alone knows.
#pragma once

#include <type_traits>

#include "dispatch/no_context.h"
#include "dispatch/thread_state.h"

// Calls the system's entry of `Target` in the place of `Op`.
template <class Target, class Result, class... Parameters>
Result forward_wgl(Parameters... arguments) {
  return sys_wgl<Target>(__osw_fetch_thread_state())(arguments...);
}

template <class Op, class Word>
struct wgl_handler;

template <class Op>
struct wgl_handler<Op, wgl_forward> {
  static __osw_proc proc() { return as_proc<Op>(forward_wgl<Op>); }
};

template <class Op, class Target>
struct wgl_handler<Op, wgl_to<Target>> {
  static __osw_proc proc() { return as_proc<Op>(forward_wgl<Target>); }
};

template <class Op>
struct wgl_handler<Op, wgl_zero> {
  static __osw_proc proc() { return reinterpret_cast<__osw_proc>(__osw_zero_stub); }
};
