#include "host.h"

#include <windows.h>

#include <cstring>

#include "ops/names.h"
#include "report.h"
#include "thunk_targets.h"

namespace {

u64 nothing() {
  return 0;
}

const __osw_proc lacking = reinterpret_cast<__osw_proc>(nothing);

constexpr DWORD longest_path = 4096;

HMODULE host_module;

// A library that stands on this driver, or is one like it, would call the driver again for every call.
bool leads_back_here(HMODULE module) {
  return GetProcAddress(module, "EnablePerformanceOptimization") || GetProcAddress(module, "OswDriverSwitchCount");
}

HMODULE load_usable(const char* path) {
  HMODULE module = LoadLibraryA(path);
  if (!module) return nullptr;
  if (!leads_back_here(module)) return module;
  report("%s stands on this driver and cannot be its host", path);
  FreeLibrary(module);
  return nullptr;
}

HMODULE load_beside_driver(const char* file) {
  HMODULE self = nullptr;
  GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                     reinterpret_cast<const char*>(&host_module), &self);
  char path[longest_path];
  const DWORD length = GetModuleFileNameA(self, path, longest_path);
  if (length == 0 || length >= longest_path) return nullptr;
  char* name = strrchr(path, '\\');
  name = name ? name + 1 : path;
  if (static_cast<size_t>(path + longest_path - name) <= strlen(file)) return nullptr;
  strcpy(name, file);
  return load_usable(path);
}

HMODULE load_system_library() {
  char path[longest_path];
  const UINT length = GetSystemDirectoryA(path, longest_path - 16);
  if (length == 0 || length >= longest_path - 16) return nullptr;
  strcpy(path + length, "\\opengl32.dll");
  return load_usable(path);
}

HMODULE find_host() {
  char named[longest_path];
  const DWORD length = GetEnvironmentVariableA("OSW_DRIVER_HOST", named, longest_path);
  // Who names a library wants that one: another in its place would only hide the mistake.
  if (length != 0 && length < longest_path) return load_usable(named);
  if (HMODULE module = load_beside_driver("opengl32host.dll")) return module;
  if (HMODULE module = load_usable("opengl32host.dll")) return module;
  return load_system_library();
}

__osw_proc exported(const char* name) {
  return reinterpret_cast<__osw_proc>(GetProcAddress(host_module, name));
}

void fill_from_exports(__osw_proc* table, const char* const* names, int count) {
  for (int op = 0; op < count; ++op) {
    if (__osw_proc entry = exported(names[op])) table[op] = entry;
  }
}

BOOL CALLBACK load_once(INIT_ONCE*, void*, void**) {
  for (__osw_proc& entry : host_gl) entry = lacking;
  for (__osw_proc& entry : host_wgl) entry = lacking;
  host_module = find_host();
  if (!host_module) {
    report("no host library was found, error %lu", GetLastError());
    return TRUE;
  }
  fill_from_exports(host_gl, __osw_gl_names, gl_op_count);
  fill_from_exports(host_wgl, __osw_wgl_names, wgl_op_count);
  for (int i = 0; i < export_thunk_count; ++i) {
    if (__osw_proc entry = exported(thunked_exports[i])) thunk_targets[i] = entry;
  }
  return TRUE;
}

bool find_in_host(__osw_proc& slot, const char* name) {
  if (slot != lacking) return true;
  __osw_proc entry = ask_host(name);
  if (!entry) return false;
  slot = entry;
  return true;
}

}  // namespace

__osw_proc host_gl[gl_op_count];
__osw_proc host_wgl[wgl_op_count];

bool load_host() {
  static INIT_ONCE once = INIT_ONCE_STATIC_INIT;
  InitOnceExecuteOnce(&once, load_once, nullptr, nullptr);
  return host_module != nullptr;
}

__osw_proc ask_host(const char* name) {
  if (!load_host()) return nullptr;
  return known_entry(host_wgl_entry<wglGetProcAddress_op>()(name));
}

bool find_host_gl(int op, const char* name) {
  return find_in_host(host_gl[op], name);
}

bool find_host_wgl(int op, const char* name) {
  return find_in_host(host_wgl[op], name);
}
