#include "host_turns.h"

#include <windows.h>

#include <type_traits>

#include "host.h"
#include "llvmpipe.h"
#include "report.h"
#include "spread_process.h"

namespace {

// A draw is soon done: to wait for it is less than to sleep and be woken.
constexpr DWORD spins = 400;

// Not a slim lock: the host may come back to the driver through gdi32, and at the end of the process a thread that was
// ended within its turn must not keep others from theirs.
CRITICAL_SECTION host_lock;

struct turn {
  turn() { EnterCriticalSection(&host_lock); }
  ~turn() { LeaveCriticalSection(&host_lock); }
  turn(const turn&) = delete;
  turn& operator=(const turn&) = delete;
};

template <class Op, class... Ops>
constexpr bool is_one_of = (std::is_same_v<Op, Ops> || ...);

// Those that touch what contexts have queued. Others may come back to the driver on another thread.
template <class Op>
constexpr bool is_wgl_turn = is_one_of<Op, wglMakeCurrent_op, wglMakeContextCurrentARB_op, wglDeleteContext_op,
                                       wglSwapBuffers_op, wglSwapLayerBuffers_op>;

// They wait until all is drawn. What is queued already is drawn without a turn.
template <class Op>
constexpr bool waits_for_drawing = is_one_of<Op, glFinish_op, wglSwapBuffers_op, wglSwapLayerBuffers_op>;

void await_drawing() {
  {
    const turn now;
    entry_in<glFlush_op>(found_gl)();
  }
  entry_in<glFinish_op>(found_gl)();
}

template <class Op, class Type>
struct in_turn;

template <class Op, class Result, class... Parameters>
struct in_turn<Op, Result(Parameters...)> {
  static Result call(Parameters... parameters) {
    if constexpr (waits_for_drawing<Op>) await_drawing();
    const turn now;
    return entry_in<Op>(is_wgl_turn<Op> ? found_wgl : found_gl)(parameters...);
  }
};

BOOL CALLBACK begin_turns(INIT_ONCE*, void*, void**) {
  if (!is_llvmpipe()) return TRUE;
  InitializeCriticalSectionAndSpinCount(&host_lock, spins);
  for_each_gl_op([]<class Op>() { stand_before_gl(Op::op, as_proc<Op>(in_turn<Op, typename Op::type>::call)); });
  for_each_wgl_op([]<class Op>() {
    if constexpr (is_wgl_turn<Op>) stand_before_wgl(Op::op, as_proc<Op>(in_turn<Op, typename Op::type>::call));
  });
  report("Info: the host draws with one thread at a time");
  return TRUE;
}

}  // namespace

void take_turns_if_needed() {
  static INIT_ONCE once = INIT_ONCE_STATIC_INIT;
  if (is_spread_process()) InitOnceExecuteOnce(&once, begin_turns, nullptr, nullptr);
}
