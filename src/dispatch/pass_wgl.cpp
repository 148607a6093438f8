#include "dispatch/forward.h"
#include "dispatch/mode.h"
#include "dispatch/pass_through.h"

namespace {

HGLRC pass_wglCreateContext(HDC hdc) {
  return sys_wgl<wglCreateLayerContext_op>(__osw_fetch_thread_state())(hdc, 0);
}

BOOL pass_wglMakeCurrent(HDC hdc, HGLRC hglrc) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  const BOOL result = sys_wgl<wglMakeCurrent_op>(state)(hdc, hglrc);
  if (!result) return result;
  if (hglrc) {
    __osw_bind_system(state);
    __osw_enter_pass_through(state);
  } else {
    __osw_enter_no_context(state);
  }
  return result;
}

template <class Op>
struct wgl_handler_in_pass : wgl_handler<Op, typename Op::pass> {};

template <>
struct wgl_handler_in_pass<wglCreateContext_op> {
  static __osw_proc proc() { return as_proc<wglCreateContext_op>(pass_wglCreateContext); }
};

template <>
struct wgl_handler_in_pass<wglMakeCurrent_op> {
  static __osw_proc proc() { return as_proc<wglMakeCurrent_op>(pass_wglMakeCurrent); }
};

}  // namespace

void __osw_fill_wgl_table_pass() {
#define WGL_OP(number, function, result, parameters, arguments, sync_mode, main_handler, pass_handler) \
  __osw_wgl_table_pass[number] = wgl_handler_in_pass<function##_op>::proc();
#include "ops/wgl_ops.inc"
#undef WGL_OP
}
