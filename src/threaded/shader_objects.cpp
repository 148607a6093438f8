// Shaders and programs: creation, whose handle the application needs at once though the op is asynchronous, and the
// source strings.
#include <cstdlib>
#include <cstring>

#include "dispatch/report.h"
#include "threaded/encoders.h"
#include "threaded/shader_source.h"

namespace {

// With the application's own context following, its handle is the result, and the parts make theirs without a wait.
template <class Op, class... Parameters>
GLuint create(Parameters... arguments) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  GLuint handle = 0;
  const bool known = mirrors();
  if (known) handle = sys_gl<Op>(state)(arguments...);
  push<Op>(state, arguments...);
  if (known) return handle;
  __osw_send_sync_cmd(state);
  return last_result<GLuint>(state);
}

u64 length_of(const GLchar* string, const GLint* length) {
  if (length && *length >= 0) return static_cast<u64>(*length);
  return string ? strlen(string) : 0;
}

const GLint* length_at(const GLint* lengths, GLsizei i) {
  return lengths ? lengths + i : nullptr;
}

}  // namespace

GLuint glCreateProgram_op::encode() {
  return create<glCreateProgram_op>();
}

GLuint glCreateShader_op::encode(GLenum type) {
  return create<glCreateShader_op>(type);
}

u64 __osw_shader_source_size(GLsizei count, const GLchar* const* strings, const GLint* lengths) {
  u64 size = 1;
  for (GLsizei i = 0; i < count; ++i) size += length_of(strings[i], length_at(lengths, i));
  return size;
}

void __osw_shader_source_join(GLchar* joined, GLsizei count, const GLchar* const* strings, const GLint* lengths) {
  char* end = joined;
  for (GLsizei i = 0; i < count; ++i) {
    if (!strings[i]) continue;
    const u64 length = strnlen(strings[i], length_of(strings[i], length_at(lengths, i)));
    memcpy(end, strings[i], length);
    end += length;
    *end = 0;
  }
}

// All the strings reach the workers as one, in a block behind the parameters that the string array points at.
void glShaderSource_op::encode(GLuint shader, GLsizei count, const GLchar* const* strings, const GLint* lengths) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  mirror<glShaderSource_op>(state, shader, count, strings, lengths);
  constexpr u32 block_slot = parameter_count<glShaderSource_op>;
  auto* joined = static_cast<GLchar*>(calloc(__osw_shader_source_size(count, strings, lengths), 1));
  if (!joined) {
    __osw_report(severity_error, "no memory for the data of %s\n", glShaderSource_op::name);
    return;
  }
  __osw_shader_source_join(joined, count, strings, lengths);
  __osw_cmd* cmd = begin_cmd(state);
  cmd->args[block_slot] = to_slot(joined);
  const u64 slots[block_slot] = {to_slot(shader), 1, to_slot(&cmd->args[block_slot]), 0};
  __osw_push_gl_cmd(state, op, block_slot, slots, 1u << block_slot);
}
