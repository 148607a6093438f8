#include "extended/strings.h"

#include <cstring>

#include "ops/payload.h"
#include "threaded/blob.h"

void* copy_strings_to_blob(GLsizei count, const GLchar* const* strings, const char* function) {
  u64 bytes = __osw_checked_bytes(count, sizeof *strings);
  if (bytes != too_many_bytes) {
    for (GLsizei i = 0; i < count; ++i) bytes += bytes_of_text(strings[i]);
  }
  void* blob = make_blob(bytes, function);
  if (!blob) return nullptr;
  auto* copies = static_cast<GLchar**>(blob);
  GLchar* end = reinterpret_cast<GLchar*>(copies + (count > 0 ? count : 0));
  for (GLsizei i = 0; i < count; ++i) {
    const u64 length = bytes_of_text(strings[i]);
    copies[i] = length ? end : nullptr;
    if (length) memcpy(end, strings[i], length);
    end += length;
  }
  return blob;
}
