// A stand-in of the wrapper: the switch of the feature and its shared section, which counts what is done to it.
#include <windows.h>

#include <cstdlib>
#include <cstring>

#include "standin.h"

__attribute__((section("Shared"), shared)) standin_state shared_state = {};

static bool has_enabled;
static int saw_debug_break;
static unsigned saw_dead_loop;

// As the library has it: the environment's word counts for more than the registry's.
static unsigned option_number(const char* name) {
  if (const char* own = getenv(name)) return static_cast<unsigned>(atoi(own));
  DWORD number = 0, size = sizeof number;
  RegGetValueA(HKEY_LOCAL_MACHINE, "Software\\Z4graphics\\OGLSPANWrapper", name, RRF_RT_ANY, nullptr, &number, &size);
  return number;
}

extern "C" {

__declspec(dllexport) char* EnablePerformanceOptimization(const char* path) {
  has_enabled = true;
  ++shared_state.enable_count;
  shared_state.is_enabled = 1;
  memset(shared_state.list_path, 0, sizeof shared_state.list_path);
  strncpy(shared_state.list_path, path, sizeof shared_state.list_path - 1);
  shared_state.enabler_saw_debug_break = saw_debug_break;
  shared_state.enabler_saw_dead_loop = saw_dead_loop;
  return shared_state.list_path;
}

__declspec(dllexport) void DisablePerformanceOptimization() {
  ++shared_state.disable_count;
  shared_state.is_enabled = 0;
}

__declspec(dllexport) const standin_state* standin_get_state() {
  return &shared_state;
}

BOOL WINAPI DllMain(HINSTANCE, DWORD reason, LPVOID) {
  if (reason == DLL_PROCESS_ATTACH) {
    saw_debug_break = getenv("Z4OSW_DEBUG_BREAK") != nullptr;
    saw_dead_loop = option_number("OSW_DW_DeadLoopWhenLoadDll");
  }
  // Where the real library is switched on only to be switched off again, it must not come to its own clean-up, which
  // loads the driver.
  if ((reason == DLL_THREAD_DETACH || reason == DLL_PROCESS_DETACH) && has_enabled) ++shared_state.enabler_detaches;
  return TRUE;
}
}
