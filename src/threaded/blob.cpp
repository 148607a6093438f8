#include "threaded/blob.h"

#include <cstdlib>
#include <cstring>

#include "dispatch/report.h"

void* __osw_copy_to_blob(const void* data, u64 bytes, const char* function) {
  void* blob = malloc(bytes ? bytes : 1);
  if (!blob) {
    __osw_report(severity_error, "no memory for the data of %s\n", function);
    return nullptr;
  }
  memcpy(blob, data, bytes);
  return blob;
}
