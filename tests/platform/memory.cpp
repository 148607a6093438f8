// The pages of the process, as the host's kernel tells them.
#include <cstdio>

#include "state.h"

namespace {

struct mapped_range {
  ULONG_PTR first = 0;
  ULONG_PTR end = 0;
  DWORD protect = 0;
};

// The range that holds `address`; without one, the gap up to the next has no protection.
mapped_range range_at(ULONG_PTR address) {
  mapped_range found{address, ~ULONG_PTR{0}, 0};
  std::FILE* maps = std::fopen("/proc/self/maps", "r");
  if (maps == nullptr) platform::misuse("no list of the process's pages on this host");
  unsigned long first = 0;
  unsigned long end = 0;
  char access[5] = {};
  char line[8192];
  while (std::fgets(line, sizeof line, maps) != nullptr) {
    if (std::sscanf(line, "%lx-%lx %4s", &first, &end, access) != 3 || end <= address) continue;
    if (address < first) {
      found.end = first;
    } else {
      const DWORD protect = access[0] != 'r' ? PAGE_NOACCESS : access[1] == 'w' ? PAGE_READWRITE : PAGE_READONLY;
      found = {first, end, protect};
    }
    break;
  }
  std::fclose(maps);
  return found;
}

}  // namespace

extern "C" SIZE_T VirtualQuery(LPCVOID address, MEMORY_BASIC_INFORMATION* information, SIZE_T size) {
  if (platform::ordered_to_fail("VirtualQuery") || size < sizeof *information) return 0;
  constexpr ULONG_PTR page = 4096;
  const ULONG_PTR first = reinterpret_cast<ULONG_PTR>(address) & ~(page - 1);
  const mapped_range range = range_at(reinterpret_cast<ULONG_PTR>(address));
  *information = {};
  information->BaseAddress = reinterpret_cast<LPVOID>(first);
  information->RegionSize = range.end - first;
  information->State = range.protect == 0 ? MEM_FREE : MEM_COMMIT;
  information->Protect = range.protect == 0 ? PAGE_NOACCESS : range.protect;
  return sizeof *information;
}
