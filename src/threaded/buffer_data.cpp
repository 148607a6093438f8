// Buffer contents. The application's own context allocates storage and gets no contents: reads go through the workers.
#include "threaded/encoders.h"

namespace {

const void* copy_contents(const void* data, const block_payload& payload, const char* function) {
  if (!data || payload.bytes < 0) return nullptr;
  return __osw_copy_to_blob(data, static_cast<u64>(payload.bytes), function);
}

}  // namespace

void glBufferData_op::encode(GLenum target, GLsizeiptr size, const void* data, GLenum usage) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  mirror<glBufferData_op>(state, target, size, nullptr, usage);
  const void* copy = copy_contents(data, payload(target, size, data, usage), name);
  push_with_blobs<glBufferData_op>(state, array_blob<glBufferData_op>, target, size, copy, usage);
}

void glBufferSubData_op::encode(GLenum target, GLintptr offset, GLsizeiptr size, const void* data) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  mirror<glBufferSubData_op>(state, target, offset, size, nullptr);
  const void* copy = copy_contents(data, payload(target, offset, size, data), name);
  if (data && size > 0 && !copy) size = 0;
  push_with_blobs<glBufferSubData_op>(state, array_blob<glBufferSubData_op>, target, offset, size, copy);
}
