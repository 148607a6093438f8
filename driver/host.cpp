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

// What stands before the host's entries, or null.
__osw_proc before_gl[gl_op_count];
__osw_proc before_wgl[wgl_op_count];

// The tables of a space of ops.
struct tables {
  __osw_proc *called, *found, *before;

  void set_found(int op, __osw_proc entry) const {
    found[op] = entry;
    called[op] = before[op] ? before[op] : entry;
  }
  void set_before(int op, __osw_proc entry) const {
    before[op] = entry;
    if (found[op] != lacking) called[op] = entry;
  }
};

constexpr tables gl_tables = {host_gl, found_gl, before_gl}, wgl_tables = {host_wgl, found_wgl, before_wgl};

// A library that stands on this driver, or is one like it, would call the driver again for every call.
bool leads_back_here(HMODULE module) {
  return GetProcAddress(module, "EnablePerformanceOptimization") || GetProcAddress(module, "OswDriverSwitchCount");
}

// The host's own libraries come from its folder or the system's.
HMODULE load_usable(const char* path) {
  HMODULE module = LoadLibraryExA(path, nullptr, LOAD_LIBRARY_SEARCH_DLL_LOAD_DIR | LOAD_LIBRARY_SEARCH_SYSTEM32);
  if (!module) return nullptr;
  if (!leads_back_here(module)) return module;
  report("%s stands on this driver and cannot be its host", path);
  FreeLibrary(module);
  return nullptr;
}

// A file of the system's folder, whose contents are the machine's own.
HMODULE load_from_system_folder(const char* file) {
  char path[longest_path];
  const UINT length = GetSystemDirectoryA(path, longest_path);
  if (length == 0 || length + strlen(file) + 2 > longest_path) return nullptr;
  path[length] = '\\';
  strcpy(path + length + 1, file);
  return load_usable(path);
}

bool is_separator(char c) {
  return c == '\\' || c == '/';
}

// A path that means the same file whatever the current folder is.
bool is_full_path(const char* path) {
  if (is_separator(path[0])) return is_separator(path[1]);
  return path[0] != 0 && path[1] == ':' && is_separator(path[2]);
}

// Who names a library wants that one: another in its place would only hide the mistake.
HMODULE load_named(const char* name) {
  if (is_full_path(name)) return load_usable(name);
  if (!strpbrk(name, "\\/:")) return load_from_system_folder(name);
  report("OSW_DRIVER_HOST must be a full path or a file of the system's folder, and is %s", name);
  SetLastError(ERROR_BAD_PATHNAME);
  return nullptr;
}

// Never by a name alone: the loader would look for it in the current folder too, which may be anybody's, and in those
// of PATH.
HMODULE find_host() {
  char named[longest_path];
  const DWORD length = GetEnvironmentVariableA("OSW_DRIVER_HOST", named, longest_path);
  if (length != 0) return length < longest_path ? load_named(named) : nullptr;
  // Under Wine the first is placed there, since a process that has our opengl32.dll cannot have its own of that name.
  if (HMODULE module = load_from_system_folder("opengl32host.dll")) return module;
  return load_from_system_folder("opengl32.dll");
}

__osw_proc exported(const char* name) {
  return reinterpret_cast<__osw_proc>(GetProcAddress(host_module, name));
}

void empty(const tables& of, int count) {
  for (int op = 0; op < count; ++op) of.called[op] = of.found[op] = lacking;
}

void fill_from_exports(const tables& of, const char* const* names, int count) {
  for (int op = 0; op < count; ++op) {
    if (__osw_proc entry = exported(names[op])) of.set_found(op, entry);
  }
}

BOOL CALLBACK load_once(INIT_ONCE*, void*, void**) {
  empty(gl_tables, gl_op_count);
  empty(wgl_tables, wgl_op_count);
  host_module = find_host();
  if (!host_module) {
    report("no host library was found, error %lu", GetLastError());
    return TRUE;
  }
  fill_from_exports(gl_tables, __osw_gl_names, gl_op_count);
  fill_from_exports(wgl_tables, __osw_wgl_names, wgl_op_count);
  for (int i = 0; i < export_thunk_count; ++i) {
    if (__osw_proc entry = exported(thunked_exports[i])) thunk_targets[i] = entry;
  }
  return TRUE;
}

bool find_in_host(const tables& of, int op, const char* name) {
  if (of.found[op] != lacking) return true;
  __osw_proc entry = ask_host(name);
  if (!entry) return false;
  of.set_found(op, entry);
  return true;
}

}  // namespace

__osw_proc host_gl[gl_op_count];
__osw_proc host_wgl[wgl_op_count];
__osw_proc found_gl[gl_op_count];
__osw_proc found_wgl[wgl_op_count];

void stand_before_gl(int op, __osw_proc before) {
  gl_tables.set_before(op, before);
}

void stand_before_wgl(int op, __osw_proc before) {
  wgl_tables.set_before(op, before);
}

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
  return find_in_host(gl_tables, op, name);
}

bool find_host_wgl(int op, const char* name) {
  return find_in_host(wgl_tables, op, name);
}
