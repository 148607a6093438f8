// Two calls whose data travel in the record as long as they fit, and in a block behind the parameters when they do not.
#include <cstring>

#include "threaded/encoders.h"

namespace {

// Puts `bytes` of `data` behind the op's parameters. Result: the address for the command; `mask` takes the block's bit.
// Null without memory.
template <class Op>
void* place_behind(__osw_thread_state* state, const void* data, u64 bytes, u32* mask) {
  constexpr u32 behind = parameter_count<Op>;
  __osw_cmd* cmd = begin_cmd(state);
  if (bytes <= (cmd_slots - behind) * sizeof(u64)) return put_in_record(cmd, behind, data, bytes);
  void* blob = __osw_copy_to_blob(data, bytes, Op::name);
  if (!blob) return nullptr;
  cmd->args[behind] = to_slot(blob);
  *mask = 1u << behind;
  return blob;
}

}  // namespace

void glDrawBuffers_op::encode(GLsizei count, const GLenum* buffers) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  mirror<glDrawBuffers_op>(state, count, buffers);
  const u64 bytes = buffers ? bytes_of<glDrawBuffers_op>(payload(count, buffers)) : 0;
  u32 mask = 0;
  const void* copy = place_behind<glDrawBuffers_op>(state, buffers, bytes, &mask);
  if (copy) push_with_blobs<glDrawBuffers_op>(state, mask, count, copy);
}

void glBindAttribLocation_op::encode(GLuint program, GLuint index, const GLchar* attribute) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  mirror<glBindAttribLocation_op>(state, program, index, attribute);
  const u64 bytes = attribute ? strlen(attribute) + 1 : 0;
  u32 mask = 0;
  const void* copy = place_behind<glBindAttribLocation_op>(state, attribute, bytes, &mask);
  if (copy) push_with_blobs<glBindAttribLocation_op>(state, mask, program, index, copy);
}
