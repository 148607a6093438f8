#include "names.h"

#include <cstring>

#include "binding.h"
#include "entries.h"
#include "fast_switch.h"
#include "host.h"
#include "indexed_scissor.h"
#include "ops/names.h"
#include "spread_process.h"
#include "thunks.h"

namespace {

// The private entries are handed out whether or not the host has such, and under no context too, but for the switch.
bool is_private_gl(int op) {
  return op == glViewportOffsetZ4_op::op || op == glDrawableSizeZ4_op::op;
}

bool is_private_wgl(int op) {
  return op == wglFastSwitchContextZ4_op::op || op == wglGetGLContextZ4_op::op;
}

// In the basic mode a context that is made with attributes has no parts; a program that cannot have one makes one that
// has.
bool is_withheld_function(int op) {
  return op == wglCreateContextAttribsARB_op::op && is_told_less();
}

__osw_proc find_proc(const char* name) {
  if (strcmp(name, "OswDriverSwitchCount") == 0) return reinterpret_cast<__osw_proc>(driver_OswDriverSwitchCount);
  const int gl = find_gl_op(name), wgl = find_wgl_op(name);
  if (is_private_gl(gl)) return driver_gl_entries[gl];
  if (wgl == wglFastSwitchContextZ4_op::op && !offers_fast_switch()) return nullptr;
  if (is_private_wgl(wgl)) return driver_wgl_entries[wgl];
  if (is_withheld_function(wgl)) return nullptr;
  bind_current();
  __osw_proc hosts = ask_host(name);
  if (!hosts) return nullptr;
  // What the host exports is called there; it may answer another address to the name.
  if (gl >= 0) {
    find_host_gl(gl, name);
    return driver_gl_entries[gl];
  }
  if (wgl >= 0) {
    find_host_wgl(wgl, name);
    return driver_wgl_entries[wgl];
  }
  if (__osw_proc entry = indexed_scissor_entry(name, hosts)) return entry;
  return thunk_for(name, hosts);
}

}  // namespace

PROC find_entry(const char* name) {
  return name ? reinterpret_cast<PROC>(find_proc(name)) : nullptr;
}
