// The loaded opengl32.dll, as its process sees it from the outside.
#pragma once

#include <windows.h>

HMODULE wrapper();  // opengl32.dll
HMODULE driver();   // opengl32sys.dll, or null before it is loaded

HMODULE module_of(const void* address);  // that it lies in, or null

// An export of opengl32.dll, or null.
template <class Function>
Function* exported(const char* name) {
  return reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(wrapper(), name)));
}

// The contents of the section that all processes share which have loaded the same file.
struct shared_section {
  int enable;
  char reserved[12];
  char list_path[260];
};

// Null when the library has no section of that name that is shared.
const shared_section* find_shared_section();
