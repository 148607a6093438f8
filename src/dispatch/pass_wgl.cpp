#include "dispatch/forward.h"
#include "dispatch/mode.h"
#include "dispatch/pass_through.h"

namespace {

template <class Op, class Word>
struct pass_handler : wgl_handler<Op, Word> {};

template <class Op>
struct pass_handler<Op, wgl_own> {
  static __osw_proc proc() { return as_proc<Op>(Op::pass); }
};

}  // namespace

HGLRC wglCreateContext_op::pass(HDC hdc) {
  return sys_wgl<wglCreateLayerContext_op>(__osw_fetch_thread_state())(hdc, 0);
}

BOOL wglMakeCurrent_op::pass(HDC hdc, HGLRC hglrc) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  const BOOL result = sys_wgl<wglMakeCurrent_op>(state)(hdc, hglrc);
  if (!result || state == shared_thread_state()) return result;
  if (hglrc) {
    __osw_bind_system(state);
    __osw_enter_pass_through(state);
  } else {
    __osw_enter_no_context(state);
  }
  return result;
}

void __osw_fill_wgl_table_pass() {
  for_each_wgl_op([]<class Op>() { __osw_wgl_table_pass[Op::op] = pass_handler<Op, typename Op::bypassed>::proc(); });
}
