#include "module.h"

#include <cstring>

HMODULE wrapper() {
  return GetModuleHandleA("opengl32.dll");
}

HMODULE driver() {
  return GetModuleHandleA("opengl32sys.dll");
}

HMODULE module_of(const void* address) {
  HMODULE module = nullptr;
  constexpr DWORD by_address = GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT;
  return GetModuleHandleExA(by_address, static_cast<const char*>(address), &module) ? module : nullptr;
}

const shared_section* find_shared_section() {
  auto* base = reinterpret_cast<const char*>(wrapper());
  auto* dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
  auto* headers = reinterpret_cast<const IMAGE_NT_HEADERS64*>(base + dos->e_lfanew);
  const IMAGE_SECTION_HEADER* section = IMAGE_FIRST_SECTION(headers);
  for (int i = 0; i < headers->FileHeader.NumberOfSections; ++i, ++section) {
    if (memcmp(section->Name, "Shared\0", IMAGE_SIZEOF_SHORT_NAME - 1) != 0) continue;
    if (!(section->Characteristics & IMAGE_SCN_MEM_SHARED)) return nullptr;
    return reinterpret_cast<const shared_section*>(base + section->VirtualAddress);
  }
  return nullptr;
}
