#include "wine.h"

#include <windows.h>

bool is_under_wine() {
  static const bool under_wine = GetProcAddress(GetModuleHandleA("ntdll.dll"), "wine_get_version") != nullptr;
  return under_wine;
}
