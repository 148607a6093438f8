// Buffer contents. The application's own context allocates storage and gets no contents: reads go through the workers.
#include "threaded/encoders.h"

template <>
void encode<glBufferData_op>(GLenum target, GLsizeiptr size, const void* data, GLenum usage) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  mirror<glBufferData_op>(state, target, size, nullptr, usage);
  const void* copy =
      data && size >= 0 ? __osw_copy_to_blob(data, static_cast<u64>(size), glBufferData_op::name) : nullptr;
  push_with_blobs<glBufferData_op>(state, 1u << 2, target, size, copy, usage);
}

template <>
void encode<glBufferSubData_op>(GLenum target, GLintptr offset, GLsizeiptr size, const void* data) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  mirror<glBufferSubData_op>(state, target, offset, size, nullptr);
  const void* copy =
      data && size >= 0 ? __osw_copy_to_blob(data, static_cast<u64>(size), glBufferSubData_op::name) : nullptr;
  if (data && size > 0 && !copy) size = 0;
  push_with_blobs<glBufferSubData_op>(state, 1u << 3, target, offset, size, copy);
}
