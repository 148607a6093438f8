#include "startup/config/process_identity.h"

#include <atomic>

HINSTANCE __osw_hinstance;
u32 __osw_process_id;
char __osw_app_exe_name[MAX_PATH];
i32 __osw_app_special_window;

void keep_library_loaded() {
  static std::atomic<bool> kept;
  if (kept.load(std::memory_order_relaxed)) return;
  HMODULE self = nullptr;
  constexpr DWORD flags = GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_PIN;
  // Any address within the library tells which one it is.
  if (GetModuleHandleExA(flags, __osw_app_exe_name, &self)) kept.store(true, std::memory_order_relaxed);
}
