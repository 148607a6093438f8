#include "dispatch/lookup.h"

#include <cstring>

#include "dispatch/report.h"
#include "dispatch/system.h"
#include "dispatch/thread_state.h"
#include "ops/aliases.h"
#include "ops/names.h"

namespace {

constexpr auto gl_has_handlers = gl_all_list::column<bool>([]<class Op>() { return has_handlers<Op>; });

// The op that a name stands for in this process, or -1.
int gl_op_of(const char* name) {
  int op = find_gl_op(name, gl_ops_in_use);
  if (op < 0 && gl_ops_in_use > gl_op_count) op = find_aliased_op(name);
  return op >= 0 && gl_has_handlers.of[op] ? op : -1;
}

}  // namespace

__osw_proc __osw_find_wgl_entry(const char* name) {
  const int op = find_wgl_op(name);
  return op < 0 ? nullptr : __osw_wgl_entries[op];
}

__osw_proc __osw_find_gl_entry(const char* name) {
  const int op = gl_op_of(name);
  return op < 0 ? nullptr : __osw_gl_entries[op];
}

PROC __osw_get_proc_address(LPCSTR name) {
  const PROC answer = sys_wgl<wglGetProcAddress_op>(__osw_fetch_thread_state())(name);
  if (!known_entry(answer)) return nullptr;
  __osw_proc entry = nullptr;
  if (strncmp(name, "wgl", 3) == 0) {
    entry = __osw_find_wgl_entry(name);
    if (entry) bind_missing_wgl(find_wgl_op(name), reinterpret_cast<__osw_proc>(answer));
  } else if (strncmp(name, "gl", 2) == 0) {
    entry = __osw_find_gl_entry(name);
    if (entry) bind_missing_gl(gl_op_of(name), reinterpret_cast<__osw_proc>(answer));
  } else {
    __osw_report(severity_error, "function %s needs to be implemented", name);
  }
  return reinterpret_cast<PROC>(entry);
}
