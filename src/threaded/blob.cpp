#include "threaded/blob.h"

#include <cstdlib>
#include <cstring>

#include "dispatch/report.h"

u64 __osw_checked_bytes(i32 count, u64 item_size) {
  if (count < 0) return 0;
  const u64 bytes = static_cast<u64>(count) * item_size;
  return bytes > 0x7FFFFFFF ? 0 : bytes;
}

void* __osw_copy_to_blob(const void* data, u64 bytes, const char* function) {
  void* blob = malloc(bytes ? bytes : 1);
  if (!blob) {
    __osw_report(severity_error, "no memory for the data of %s\n", function);
    return nullptr;
  }
  memcpy(blob, data, bytes);
  return blob;
}
