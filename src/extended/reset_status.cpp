// Whether the graphics had to be reset: the worst that any of the contexts tells.
#include "sequential/broadcast.h"
#include "threaded/encode.h"

namespace {

// Guilty is worse than innocent, which is worse than unknown, and that than no reset.
u32 badness(GLenum status) {
  switch (status) {
    case GL_NO_ERROR:
      return 0;
    case GL_INNOCENT_CONTEXT_RESET:
      return 2;
    case GL_GUILTY_CONTEXT_RESET:
      return 3;
    default:
      return 1;
  }
}

GLenum worse_reset(GLenum one, GLenum other) {
  return badness(other) > badness(one) ? other : one;
}

}  // namespace

GLenum glGetGraphicsResetStatus_op::encode() {
  __osw_thread_state* state = __osw_fetch_thread_state();
  GLenum status = mirrors() ? sys_gl<glGetGraphicsResetStatus_op>(state)() : GL_NO_ERROR;
  GLenum of_part[max_parts] = {};
  begin_cmd(state)->args[0] = to_slot(&of_part[0]);
  push<glGetGraphicsResetStatus_op>(state);
  for (const GLenum one : of_part) status = worse_reset(status, one);
  return status;
}

GLenum glGetGraphicsResetStatus_op::replay(const replay_scene& on) {
  auto* of_part = from_slot<GLenum*>(on.cmd->args[0]);
  return of_part[on.part] = entry_in<glGetGraphicsResetStatus_op>(on.system)();
}

GLenum glGetGraphicsResetStatus_op::broadcast() {
  const __osw_thread_state* state = __osw_fetch_thread_state();
  glGetGraphicsResetStatus_op::type* target = sys_gl<glGetGraphicsResetStatus_op>(state);
  GLenum status = GL_NO_ERROR;
  __osw_for_each_part(state, [&](i32) { status = worse_reset(status, target()); });
  return worse_reset(status, target());
}
