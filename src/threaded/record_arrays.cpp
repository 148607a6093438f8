// Two calls whose data travel in the record as long as they fit, and in a block behind the parameters when they do not.
#include <cstring>

#include "threaded/encoders.h"

namespace {

// Puts `bytes` of `data` behind the `count` parameters. Result: the address for the command; `mask` takes the block's
// bit. Null without memory.
void* place_behind(__osw_thread_state* state, u32 count, const void* data, u64 bytes, const char* name, u32* mask) {
  __osw_cmd* cmd = __osw_next_cmd(state->cmd_queue);
  if (bytes <= (cmd_slots - count) * sizeof(u64)) return put_in_record(cmd, count, data, bytes);
  void* blob = __osw_copy_to_blob(data, bytes, name);
  if (!blob) return nullptr;
  cmd->args[count] = to_slot(blob);
  *mask = 1u << count;
  return blob;
}

}  // namespace

template <>
void encode<glDrawBuffers_op>(GLsizei count, const GLenum* buffers) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  mirror<glDrawBuffers_op>(state, count, buffers);
  const u64 bytes = buffers ? __osw_checked_bytes(count, sizeof *buffers) : 0;
  u32 mask = 0;
  const void* copy = place_behind(state, 2, buffers, bytes, glDrawBuffers_op::name, &mask);
  if (copy) push_with_blobs<glDrawBuffers_op>(state, mask, count, copy);
}

template <>
void encode<glBindAttribLocation_op>(GLuint program, GLuint index, const GLchar* name) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  mirror<glBindAttribLocation_op>(state, program, index, name);
  const u64 bytes = name ? strlen(name) + 1 : 0;
  u32 mask = 0;
  const void* copy = place_behind(state, 3, name, bytes, glBindAttribLocation_op::name, &mask);
  if (copy) push_with_blobs<glBindAttribLocation_op>(state, mask, program, index, copy);
}
