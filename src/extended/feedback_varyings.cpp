// The outputs of a program that transform feedback keeps.
#include "extended/strings.h"
#include "threaded/encode_blob.h"

namespace {

template <class Op>
void set_varyings(GLuint program, GLsizei count, const GLchar* const* varyings, GLenum buffer_mode) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  mirror<Op>(state, program, count, varyings, buffer_mode);
  const void* copies = varyings && count > 0 ? copy_strings_to_blob(count, varyings, Op::name) : nullptr;
  if (varyings && count > 0 && !copies) return;
  push_with_blobs<Op>(state, array_blob<Op>, program, count, copies, buffer_mode);
}

}  // namespace

void changed<glTransformFeedbackVaryings_op>::encode(GLuint program, GLsizei count, const GLchar* const* varyings,
                                                     GLenum buffer_mode) {
  set_varyings<changed<glTransformFeedbackVaryings_op>>(program, count, varyings, buffer_mode);
}

void changed<glTransformFeedbackVaryingsEXT_op>::encode(GLuint program, GLsizei count, const GLchar* const* varyings,
                                                        GLenum buffer_mode) {
  set_varyings<changed<glTransformFeedbackVaryingsEXT_op>>(program, count, varyings, buffer_mode);
}
