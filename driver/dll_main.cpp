#include <windows.h>

#include "binding.h"
#include "window_share.h"

// The host is loaded at the first call that needs it, since nothing may be loaded here.
BOOL WINAPI DllMain(HINSTANCE, DWORD reason, void* ending) {
  if (reason == DLL_PROCESS_ATTACH) return start_bindings(settle_new_binding);
  if (reason == DLL_THREAD_DETACH) end_thread_binding();
  if (reason == DLL_PROCESS_DETACH && !ending) stop_bindings();
  return TRUE;
}
