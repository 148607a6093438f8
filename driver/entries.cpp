// The driver's entries, exported or handed out by name: one function per op, and what finds them.
#include <cstring>

#include "drawable_size.h"
#include "extension_names.h"
#include "names.h"
#include "state_queries.h"
#include "thunks.h"
#include "wgl_entries.h"
#include "window_coordinates.h"

#define GL_OP(number, function, sync, threaded, sequential, replay, alias, payload, result, parameters, arguments) \
  extern "C" result driver_##function parameters {                                                                 \
    return forward<function##_op, result> arguments;                                                               \
  }
#include "ops/gl_ops.inc"
#undef GL_OP

#define WGL_OP(number, function, sync, main, pass, replay, result, parameters, arguments) \
  extern "C" result driver_##function parameters {                                        \
    return forward_wgl<function##_op, result> arguments;                                  \
  }
#include "ops/wgl_ops.inc"
#undef WGL_OP

namespace {

struct named_entry {
  const char* name;
  __osw_proc entry;
};

#define GL_OP(number, function, ...) {#function, reinterpret_cast<__osw_proc>(driver_##function)},
const named_entry gl_entries[] = {
#include "ops/gl_ops.inc"
};
#undef GL_OP

#define WGL_OP(number, function, ...) {#function, reinterpret_cast<__osw_proc>(driver_##function)},
const named_entry wgl_entries[] = {
#include "ops/wgl_ops.inc"
};
#undef WGL_OP

const named_entry private_entries[] = {
    {"wglFastSwitchContextZ4", reinterpret_cast<__osw_proc>(driver_wglFastSwitchContextZ4)},
    {"wglGetGLContextZ4", reinterpret_cast<__osw_proc>(driver_wglGetGLContextZ4)},
    {"glViewportOffsetZ4", reinterpret_cast<__osw_proc>(driver_glViewportOffsetZ4)},
    {"glDrawableSizeZ4", reinterpret_cast<__osw_proc>(driver_glDrawableSizeZ4)},
    {"OswDriverSwitchCount", reinterpret_cast<__osw_proc>(driver_OswDriverSwitchCount)},
};

template <int count>
int position_of(const char* name, const named_entry (&entries)[count]) {
  for (int i = 0; i < count; ++i) {
    if (strcmp(entries[i].name, name) == 0) return i;
  }
  return -1;
}

__osw_proc find_proc(const char* name) {
  if (const int i = position_of(name, private_entries); i >= 0) return private_entries[i].entry;
  if (strcmp(name, "wglCreateContextAttribsARB") == 0) return nullptr;
  bind_current();
  __osw_proc hosts = ask_host(name);
  if (!hosts) return nullptr;
  // What the host exports is called there; it may answer another address to the name.
  if (const int op = position_of(name, gl_entries); op >= 0) {
    find_host_gl(op, name);
    return gl_entries[op].entry;
  }
  if (const int op = position_of(name, wgl_entries); op >= 0) {
    find_host_wgl(op, name);
    return wgl_entries[op].entry;
  }
  return thunk_for(name, hosts);
}

}  // namespace

PROC find_entry(const char* name) {
  return name ? reinterpret_cast<PROC>(find_proc(name)) : nullptr;
}
