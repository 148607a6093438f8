#include "dispatch/lookup.h"

#include <cstring>

#include "dispatch/report.h"
#include "dispatch/system.h"
#include "dispatch/thread_state.h"

namespace {

// Look-ups are few and made while a program starts, so a scan is enough.
__osw_proc find(const char* name, const char* const* names, const __osw_proc* entries, int count) {
  for (int op = 0; op < count; ++op) {
    if (strcmp(name, names[op]) == 0) return entries[op];
  }
  return nullptr;
}

}  // namespace

__osw_proc __osw_find_wgl_entry(const char* name) {
  return find(name, __osw_wgl_names, __osw_wgl_entries, wgl_op_count);
}

__osw_proc __osw_find_gl_entry(const char* name) {
  return find(name, __osw_gl_names, __osw_gl_entries, gl_op_count);
}

PROC __osw_get_proc_address(LPCSTR name) {
  const PROC answer = sys_wgl<wglGetProcAddress_op>(__osw_fetch_thread_state())(name);
  if (!__osw_known_entry(answer)) return nullptr;
  __osw_proc entry = nullptr;
  if (strncmp(name, "wgl", 3) == 0) {
    entry = __osw_find_wgl_entry(name);
  } else if (strncmp(name, "gl", 2) == 0) {
    entry = __osw_find_gl_entry(name);
  } else {
    __osw_report(severity_error, "function %s needs to be implemented", name);
  }
  return reinterpret_cast<PROC>(entry);
}
