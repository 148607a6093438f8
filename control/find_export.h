#pragma once

#include <windows.h>

#include <cstring>

// Sets `*function` to what a loaded library exports under `name`, or to null with a false result.
template <class T>
bool find_export(HMODULE module, const char* name, T* function) {
  const FARPROC address = GetProcAddress(module, name);
  static_assert(sizeof *function == sizeof address);
  memcpy(function, &address, sizeof *function);
  return address != nullptr;
}
