#include "wrapper.h"

#include <cstdlib>

#include "find_export.h"
#include "libraries.h"
#include "paths.h"
#include "text.h"

namespace {

// The library waits at its load for a debugger when it is told to: that is meant for the program, not for us.
HMODULE load_without_waiting(const std::wstring& path, std::wstring* problem) {
  // The second is read through the C runtime, whose copy and the system's are both changed by this call.
  SetEnvironmentVariableW(L"OSW_DW_DeadLoopWhenLoadDll", L"0");
  _wputenv(L"Z4OSW_DEBUG_BREAK=");
  SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX);
  const HMODULE module = LoadLibraryExW(path.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
  if (!module) *problem = path + L" cannot be loaded" + system_reason(GetLastError());
  return module;
}

}  // namespace

std::wstring find_wrapper(const std::wstring& program_folder) {
  wchar_t system[MAX_PATH] = L"", windows[MAX_PATH] = L"";
  GetSystemDirectoryW(system, MAX_PATH);
  GetWindowsDirectoryW(windows, MAX_PATH);
  for (const std::wstring& folder :
       {program_folder, std::wstring(system), in_folder(windows, L"system"), std::wstring(windows), full_path(L".")}) {
    const std::wstring path = in_folder(folder, wrapper_file);
    if (file_exists(path)) return path;
  }
  std::wstring path(32768, L'\0');
  path.resize(
      SearchPathW(_wgetenv(L"PATH"), wrapper_file, nullptr, static_cast<DWORD>(path.size()), path.data(), nullptr));
  return path;
}

bool load_wrapper(const std::wstring& path, wrapper* loaded, std::wstring* problem) {
  *problem = wrapper_problem(path);
  *loaded = {};
  if (!problem->empty()) return false;
  loaded->module = load_without_waiting(path, problem);
  if (!loaded->module) return false;
  if (find_export(loaded->module, "EnablePerformanceOptimization", &loaded->enable) &&
      find_export(loaded->module, "DisablePerformanceOptimization", &loaded->disable)) {
    return true;
  }
  *problem = L"Windows loaded another library in place of " + path + L"; see that nothing redirects that name";
  return false;
}

void replace_list(wrapper* loaded, const std::string& before, const std::string& now) {
  if (loaded->list_in_force && before != loaded->list_in_force) return;
  loaded->list_in_force = static_cast<const char*>(loaded->enable(now.c_str()));
}

void disable_wrapper(wrapper* loaded, const std::string& before) {
  if (loaded->list_in_force && before == loaded->list_in_force) loaded->disable();
  loaded->list_in_force = nullptr;
}
