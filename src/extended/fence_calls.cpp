// Fences on both paths: each part has a sync object of its own, and waiting asks all of them.
#include "dispatch/report.h"
#include "extended/fences.h"
#include "extended/part_answers.h"
#include "sequential/parts/switch.h"
#include "startup/config/monitors.h"

namespace {

// How long a part waits for a fence that another thread has issued and not handed over.
constexpr DWORD patience_ms = 1000;

// The worse of two answers to a wait.
GLenum worse(GLenum one, GLenum other) {
  for (const GLenum answer : {GL_WAIT_FAILED, GL_TIMEOUT_EXPIRED, GL_CONDITION_SATISFIED}) {
    if (one == static_cast<GLenum>(answer) || other == static_cast<GLenum>(answer)) return static_cast<GLenum>(answer);
  }
  return one;
}

DWORD milliseconds_of(GLuint64 nanoseconds) {
  const GLuint64 milliseconds = nanoseconds / 1000000 + (nanoseconds % 1000000 != 0);
  return milliseconds < INFINITE ? static_cast<DWORD>(milliseconds) : INFINITE;
}

GLsync enter_or_report(GLsync app) {
  GLsync fence = enter_fence(app);
  if (!fence) __osw_report(severity_error, "no memory for a fence, or too many of them\n");
  return fence;
}

// GL's error for what is no sync object, on the current context. Its deletion has none for null.
void refuse(const __osw_proc* system) {
  entry_in<glGetSynciv_op>(system)(nullptr, GL_OBJECT_TYPE, 0, nullptr, nullptr);
}

// ---- one part, whose context is current ----

void keep_on_part(const __osw_proc* system, i32 part, GLsync fence, GLsync own) {
  if (!keep_part_fence(fence, part, own) && own) entry_in<glDeleteSync_op>(system)(own);
}

void delete_on_part(const __osw_proc* system, i32 part, GLsync fence) {
  GLsync own = nullptr;
  if (take_part_fence(fence, part, &own) == fence_search::unknown) return refuse(system);
  if (own) entry_in<glDeleteSync_op>(system)(own);
}

GLenum client_wait_on_part(const __osw_proc* system, i32 part, GLsync fence, GLbitfield flags, GLuint64 timeout) {
  GLsync own = nullptr;
  const fence_search found = find_part_fence(fence, part, milliseconds_of(timeout), &own);
  if (found == fence_search::not_made) return GL_TIMEOUT_EXPIRED;
  return entry_in<glClientWaitSync_op>(system)(own, flags, timeout);
}

void wait_on_part(const __osw_proc* system, i32 part, GLsync fence, GLbitfield flags, GLuint64 timeout) {
  GLsync own = nullptr;
  if (find_part_fence(fence, part, patience_ms, &own) == fence_search::not_made) {
    __osw_report(severity_warning,
                 "glWaitSync: the fence of another thread did not come within a second; part %d does "
                 "not wait for it\n",
                 part);
    return;
  }
  entry_in<glWaitSync_op>(system)(own, flags, timeout);
}

GLint get_on_part(const __osw_proc* system, i32 part, GLsync fence, GLenum pname, GLsizei count) {
  GLsync own = nullptr;
  GLint value = GL_UNSIGNALED;
  GLsizei length = 0;
  if (find_part_fence(fence, part, 0, &own) != fence_search::not_made) {
    entry_in<glGetSynciv_op>(system)(own, pname, count < 1 ? count : 1, &length, &value);
  }
  return value;
}

// ---- threaded ----

GLint joined_value(const u64* answers, GLenum pname) {
  if (pname != GL_SYNC_STATUS) return from_slot<GLint>(answers[0]);
  for (i32 part = 0; part < __osw_part_count; ++part) {
    if (from_slot<GLint>(answers[part]) != GL_SIGNALED) return GL_UNSIGNALED;
  }
  return GL_SIGNALED;
}

// Whether the own context is asked first, for its errors: not about a fence of another path, which it never had.
bool asks_own_context(GLsync fence, GLsync app) {
  return mirrors() && (app || !is_fence(fence));
}

}  // namespace

GLsync glFenceSync_op::encode(GLenum condition, GLbitfield flags) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  GLsync app = nullptr;
  if (mirrors()) {
    app = sys_gl<glFenceSync_op>(state)(condition, flags);
    if (!app) return nullptr;
  }
  GLsync fence = enter_or_report(app);
  if (fence) {
    push<glFenceSync_op>(state, condition, flags, fence);
  } else if (app) {
    sys_gl<glDeleteSync_op>(state)(app);
  }
  return fence;
}

// The handle stands behind the parameters.
GLsync glFenceSync_op::replay(const replay_scene& on, GLenum condition, GLbitfield flags) {
  GLsync own = entry_in<glFenceSync_op>(on.system)(condition, flags);
  keep_on_part(on.system, on.part, from_slot<GLsync>(on.cmd->args[parameter_count<glFenceSync_op>]), own);
  return own;
}

GLboolean glIsSync_op::encode(GLsync fence) {
  return is_fence(fence);
}

void glDeleteSync_op::encode(GLsync fence) {
  if (!fence) return;
  __osw_thread_state* state = __osw_fetch_thread_state();
  GLsync app = nullptr;
  if (!forget_fence(fence, &app) && mirrors()) return refuse(state->sys_gl);
  if (app) sys_gl<glDeleteSync_op>(state)(app);
  push<glDeleteSync_op>(state, fence);
}

void glDeleteSync_op::replay(const replay_scene& on, GLsync fence) {
  delete_on_part(on.system, on.part, fence);
}

GLenum glClientWaitSync_op::encode(GLsync fence, GLbitfield flags, GLuint64 timeout) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  GLsync app = app_fence(fence);
  if (asks_own_context(fence, app)) {
    const GLenum answer = sys_gl<glClientWaitSync_op>(state)(app, flags, 0);
    if (!app || answer == GL_WAIT_FAILED) return GL_WAIT_FAILED;
  }
  const u64* answers = part_answers(state, GL_ALREADY_SIGNALED);
  push<glClientWaitSync_op>(state, fence, flags, timeout);
  GLenum worst = GL_ALREADY_SIGNALED;
  for (i32 part = 0; part < __osw_part_count; ++part) worst = worse(worst, from_slot<GLenum>(answers[part]));
  return worst;
}

GLenum glClientWaitSync_op::replay(const replay_scene& on, GLsync fence, GLbitfield flags, GLuint64 timeout) {
  const GLenum waited = client_wait_on_part(on.system, on.part, fence, flags, timeout);
  answer(on, to_slot(waited));
  return waited;
}

void glWaitSync_op::encode(GLsync fence, GLbitfield flags, GLuint64 timeout) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  GLsync app = app_fence(fence);
  if (asks_own_context(fence, app)) sys_gl<glWaitSync_op>(state)(app, flags, timeout);
  if (is_fence(fence) || !mirrors()) push<glWaitSync_op>(state, fence, flags, timeout);
}

void glWaitSync_op::replay(const replay_scene& on, GLsync fence, GLbitfield flags, GLuint64 timeout) {
  wait_on_part(on.system, on.part, fence, flags, timeout);
}

void glGetSynciv_op::encode(GLsync fence, GLenum pname, GLsizei count, GLsizei* length, GLint* values) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  GLsync app = app_fence(fence);
  if (asks_own_context(fence, app)) {
    sys_gl<glGetSynciv_op>(state)(app, pname, count, length, values);
    if (!app || pname != GL_SYNC_STATUS || count < 1 || !values) return;
  }
  const u64* answers = part_answers(state, GL_SIGNALED);
  push<glGetSynciv_op>(state, fence, pname, count, length, values);
  if (count < 1 || !values) return;
  *values = joined_value(answers, pname);
  if (length) *length = 1;
}

// The value lands in the record: the program's memory has room for one.
void glGetSynciv_op::replay(const replay_scene& on, GLsync fence, GLenum pname, GLsizei count, GLsizei*, GLint*) {
  const GLint value = get_on_part(on.system, on.part, fence, pname, count);
  answer(on, to_slot(value));
}

// ---- sequential ----

GLsync glFenceSync_op::broadcast(GLenum condition, GLbitfield flags) {
  const __osw_thread_state* state = __osw_fetch_thread_state();
  GLsync fence = enter_or_report(nullptr);
  if (!fence) return nullptr;
  bool is_whole = true;
  __osw_for_each_part(state, [&](i32 part) {
    GLsync own = sys_gl<glFenceSync_op>(state)(condition, flags);
    keep_on_part(state->sys_gl, part, fence, own);
    is_whole = is_whole && own;
  });
  if (is_whole) return fence;
  glDeleteSync_op::broadcast(fence);
  return nullptr;
}

GLboolean glIsSync_op::broadcast(GLsync fence) {
  return is_fence(fence);
}

void glDeleteSync_op::broadcast(GLsync fence) {
  if (!fence) return;
  const __osw_thread_state* state = __osw_fetch_thread_state();
  GLsync app = nullptr;
  forget_fence(fence, &app);
  __osw_for_each_part(state, [=](i32 part) { delete_on_part(state->sys_gl, part, fence); });
}

// The parts wait one after the other, each for what is left to do there when those before are through. Once one has
// waited in vain the others are only asked.
GLenum glClientWaitSync_op::broadcast(GLsync fence, GLbitfield flags, GLuint64 timeout) {
  const __osw_thread_state* state = __osw_fetch_thread_state();
  GLenum worst = is_fence(fence) ? GL_ALREADY_SIGNALED : GL_WAIT_FAILED;
  __osw_for_each_part(state, [&](i32 part) {
    const GLuint64 left = worst == GL_ALREADY_SIGNALED || worst == GL_CONDITION_SATISFIED ? timeout : 0;
    worst = worse(worst, client_wait_on_part(state->sys_gl, part, fence, flags, left));
  });
  return worst;
}

void glWaitSync_op::broadcast(GLsync fence, GLbitfield flags, GLuint64 timeout) {
  const __osw_thread_state* state = __osw_fetch_thread_state();
  __osw_for_each_part(state, [=](i32 part) { wait_on_part(state->sys_gl, part, fence, flags, timeout); });
}

void glGetSynciv_op::broadcast(GLsync fence, GLenum pname, GLsizei count, GLsizei* length, GLint* values) {
  const __osw_thread_state* state = __osw_fetch_thread_state();
  u64 answers[max_parts] = {};
  __osw_for_each_part(
      state, [&](i32 part) { answers[part] = to_slot(get_on_part(state->sys_gl, part, fence, pname, count)); });
  if (count < 1 || !values || !is_fence(fence)) return;
  *values = joined_value(answers, pname);
  if (length) *length = 1;
}
