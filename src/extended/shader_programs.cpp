// Programs that are made of the sources of one shader, in one call.
#include "extended/strings.h"
#include "threaded/encode_blob.h"
#include "threaded/encode_names.h"

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
