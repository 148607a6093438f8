#include "wgl/main_table.h"

#include "dispatch/forward.h"
#include "dispatch/lookup.h"
#include "dispatch/report.h"

namespace {

// Enters the calling thread's wgl table once more, so that the other op's handler does the work, whichever it is.
template <class Target, class Result, class... Parameters>
Result enter_row(Parameters... arguments) {
  return entry_in<Target>(__osw_fetch_thread_state()->wgl_table)(arguments...);
}

// The font lists are made in the application's own context alone.
template <class Op, class Result, class... Parameters>
Result warn_and_forward(Parameters... arguments) {
  __osw_report(severity_warning, "%s is called!\n", Op::name);
  return sys_wgl<Op>(__osw_fetch_thread_state())(arguments...);
}

template <class Op, class Word>
struct main_handler : wgl_handler<Op, Word> {};

template <class Op, class Target>
struct main_handler<Op, wgl_row<Target>> {
  static __osw_proc proc() { return as_proc<Op>(enter_row<Target>); }
};

template <class Op>
struct main_handler<Op, wgl_warn> {
  static __osw_proc proc() { return as_proc<Op>(warn_and_forward<Op>); }
};

template <class Op>
struct main_handler<Op, wgl_own> {
  static __osw_proc proc() { return as_proc<Op>(Op::handle); }
};

}  // namespace

PROC wglGetProcAddress_op::handle(LPCSTR wanted) {
  return __osw_get_proc_address(wanted);
}

void __osw_fill_wgl_table_main() {
  for_each_wgl_form_in_use(
      []<class Op>() { __osw_wgl_table_main[Op::op] = main_handler<Op, typename Op::main>::proc(); });
}
