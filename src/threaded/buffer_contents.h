// Buffer contents. The application's own context allocates storage and gets no contents: reads go through the workers.
#pragma once

#include "threaded/encode_blob.h"

inline const void* copy_contents(const void* data, const block_payload& payload, const char* function) {
  if (!data || payload.bytes < 0) return nullptr;
  return __osw_copy_to_blob(data, static_cast<u64>(payload.bytes), function);
}

// `buffer` is a target or a name.
template <class Op>
void define_contents(GLuint buffer, GLsizeiptr size, const void* data, GLenum usage) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  mirror<Op>(state, buffer, size, nullptr, usage);
  const void* copy = copy_contents(data, Op::payload(buffer, size, data, usage), Op::name);
  push_with_blobs<Op>(state, array_blob<Op>, buffer, size, copy, usage);
}

template <class Op>
void replace_contents(GLuint buffer, GLintptr offset, GLsizeiptr size, const void* data) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  mirror<Op>(state, buffer, offset, size, nullptr);
  const void* copy = copy_contents(data, Op::payload(buffer, offset, size, data), Op::name);
  if (data && size > 0 && !copy) size = 0;
  push_with_blobs<Op>(state, array_blob<Op>, buffer, offset, size, copy);
}
