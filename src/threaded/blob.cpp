#include "threaded/blob.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "dispatch/report.h"
#include "ops/payload.h"

namespace {

bool is_readable(const MEMORY_BASIC_INFORMATION& region) {
  constexpr DWORD readable = PAGE_READONLY | PAGE_READWRITE | PAGE_WRITECOPY | PAGE_EXECUTE_READ |
                             PAGE_EXECUTE_READWRITE | PAGE_EXECUTE_WRITECOPY;
  return region.State == MEM_COMMIT && (region.Protect & readable) && !(region.Protect & PAGE_GUARD);
}

// How many of `bytes` from `data` on the process may read. `known`: the byte before them it may; then the system is not
// asked for the rest of that page.
u64 readable_bytes(const u8* data, u64 bytes, bool known) {
  constexpr u64 page = 4096;
  const u64 on_page = -reinterpret_cast<u64>(data) & (page - 1);
  u64 found = known ? std::min(bytes, on_page) : 0;
  MEMORY_BASIC_INFORMATION region;
  while (found < bytes && VirtualQuery(data + found, &region, sizeof region) && is_readable(region)) {
    const u8* end = static_cast<const u8*>(region.BaseAddress) + region.RegionSize;
    found = std::min(bytes, static_cast<u64>(end - data));
  }
  return found;
}

}  // namespace

void* make_blob(u64 bytes, const char* function) {
  void* blob = bytes == too_many_bytes ? nullptr : malloc(bytes ? bytes : 1);
  if (!blob) __osw_report(severity_error, "no memory for the data of %s\n", function);
  return blob;
}

void* __osw_copy_to_blob(const void* data, u64 bytes, const char* function) {
  return copy_reached_to_blob(data, bytes, bytes, function);
}

void* copy_reached_to_blob(const void* data, u64 told, u64 reached, const char* function) {
  auto* blob = static_cast<u8*>(make_blob(reached, function));
  if (!blob) return nullptr;
  memcpy(blob, data, told);
  const u8* beyond = static_cast<const u8*>(data) + told;
  const u64 readable = readable_bytes(beyond, reached - told, told != 0);
  memcpy(blob + told, beyond, readable);
  memset(blob + told + readable, 0, reached - told - readable);
  return blob;
}
