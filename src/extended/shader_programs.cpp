// Shaders' sources, and programs that are made of the sources of one shader in one call.
#include <algorithm>

#include "extended/strings.h"
#include "threaded/encoders.h"

// The strings lie in a block behind the program's name.
GLuint glCreateShaderProgramv_op::encode(GLenum type, GLsizei count, const GLchar* const* strings) {
  using op = glCreateShaderProgramv_op;
  __osw_thread_state* state = __osw_fetch_thread_state();
  const auto push_call = [=] {
    const bool has_strings = strings && count > 0;
    void* copies = has_strings ? copy_strings_to_blob(count, strings, op::name) : nullptr;
    if (has_strings && !copies) return;
    push_with_blobs<op>(state, array_blob<op>, type, count, copies);
  };
  return encode_name<op>(state, push_call, type, count, strings);
}

namespace {

// Whether GL reads the strings: of a call that it refuses they may be no strings.
bool reads_strings(const __osw_thread_state* state, GLuint shader, GLsizei count, const GLchar* const* strings) {
  if (count < 0 || !strings) return false;
  return !sys_gl<glIsShader_op>(state) || encode_query<glIsShader_op, GLboolean>(shader);
}

}  // namespace

void changed<glShaderSource_op>::encode(GLuint shader, GLsizei count, const GLchar* const* strings,
                                        const GLint* lengths) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  if (reads_strings(state, shader, count, strings)) return glShaderSource_op::encode(shader, count, strings, lengths);
  // Only the error is left to be made.
  if (mirrors()) return sys_gl<glShaderSource_op>(state)(shader, count, strings, lengths);
  push<glShaderSource_op>(state, shader, std::min(count, 0), static_cast<const void*>(nullptr),
                          static_cast<const void*>(nullptr));
}
