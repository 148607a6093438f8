// What is asked of the contexts that have seen the calls: where only the first part reads, or only one makes an error
// of its share, the others have none.
#include <algorithm>

#include "extended/part_answers.h"
#include "sequential/broadcast.h"

GLenum changed<glGetError_op>::encode() {
  __osw_thread_state* state = __osw_fetch_thread_state();
  if (mirrors()) return sys_gl<glGetError_op>(state)();
  const u64* errors = part_answers(state, GL_NO_ERROR);
  push<glGetError_op>(state);
  const u64* found = std::find_if(errors, errors + max_parts, [](u64 error) { return error != GL_NO_ERROR; });
  return found == errors + max_parts ? GL_NO_ERROR : static_cast<GLenum>(*found);
}

GLenum changed<glGetError_op>::replay(const replay_scene& on) {
  const GLenum error = entry_in<glGetError_op>(on.system)();
  answer(on, error);
  return error;
}

GLenum changed<glGetError_op>::broadcast() {
  const __osw_thread_state* state = __osw_fetch_thread_state();
  glGetError_op::type* target = seq_target<glGetError_op>(state);
  GLenum first = GL_NO_ERROR;
  __osw_for_each_part(state, [&](i32) {
    const GLenum error = target();
    if (first == GL_NO_ERROR) first = error;
  });
  return first;
}
