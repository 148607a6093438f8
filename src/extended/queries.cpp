// Queries: what the parts have counted is put together, for each has drawn but its share of the window, and all of what
// goes to framebuffer objects. The application's own context has drawn nothing.
#include <algorithm>
#include <limits>

#include "extended/part_answers.h"
#include "sequential/broadcast.h"
#include "startup/config/monitors.h"
#include "wgl/records/glrc.h"

namespace {

bool draws_to_window(const __osw_thread_state* state) {
  return state->glrc->draw_framebuffer == 0;
}

// ---- beginnings and ends ----

void begin_note(GLenum target, u32 index, GLuint id) {
  const __osw_thread_state* state = __osw_fetch_thread_state();
  note_query_begin(&state->glrc->queries, target, index, id, draws_to_window(state));
}

void end_note(GLenum target, u32 index) {
  const __osw_thread_state* state = __osw_fetch_thread_state();
  note_query_end(&state->glrc->queries, target, index, draws_to_window(state));
}

// ---- results ----

u64 sum_of(const u64* answers) {
  u64 sum = 0;
  for (i32 part = 0; part < __osw_part_count; ++part) sum += answers[part];
  return sum;
}

u64 largest_of(const u64* answers) {
  u64 largest = 0;
  for (i32 part = 0; part < __osw_part_count; ++part) largest = std::max(largest, answers[part]);
  return largest;
}

bool all_of(const u64* answers) {
  for (i32 part = 0; part < __osw_part_count; ++part) {
    if (!answers[part]) return false;
  }
  return true;
}

// What is counted of pixels is divided among the parts where the window is drawn to, and the same on each where it is
// not.
u64 joined_result(const query_note& note, const u64* answers) {
  switch (note.target) {
    case GL_SAMPLES_PASSED:
    case GL_FRAGMENT_SHADER_INVOCATIONS_ARB:
      return note.in_window ? sum_of(answers) : answers[0];
    case GL_ANY_SAMPLES_PASSED:
    case GL_ANY_SAMPLES_PASSED_CONSERVATIVE:
      return note.in_window ? sum_of(answers) != 0 : answers[0];
    case GL_TIME_ELAPSED:
    case GL_TIMESTAMP:
      return largest_of(answers);
    default:
      return answers[0];
  }
}

// Who asks the parts: fills the answers of all of them to a pname.
template <class Ask, class Value>
void join_answers(const query_note& note, GLenum pname, Value* value, Ask ask) {
  u64 answers[max_parts] = {};
  if (pname != GL_QUERY_RESULT) {
    ask(GLenum{GL_QUERY_RESULT_AVAILABLE}, answers);
    const bool is_there = all_of(answers);
    if (pname == GL_QUERY_RESULT_AVAILABLE) *value = is_there;
    if (pname == GL_QUERY_RESULT_AVAILABLE || !is_there) return;
  }
  ask(GLenum{GL_QUERY_RESULT}, answers);
  const u64 joined = joined_result(note, answers);
  *value = static_cast<Value>(std::min<u64>(joined, std::numeric_limits<Value>::max()));
}

// The note of a query whose answer is put together; null where one context knows the answer, or GL has an error.
const query_note* joined_query(const __osw_thread_state* state, GLuint id, GLenum pname, const void* value) {
  const query_note* note = find_query(state->glrc->queries, id);
  if (!note || note->is_active || !value) return nullptr;
  const bool is_joined =
      pname == GL_QUERY_RESULT || pname == GL_QUERY_RESULT_AVAILABLE || pname == GL_QUERY_RESULT_NO_WAIT;
  return is_joined ? note : nullptr;
}

template <class Op, class Value>
void encode_result(GLuint id, GLenum pname, Value* value) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  const auto ask = [=](GLenum asked, u64* answers) {
    const u64* said = part_answers(state, 0);
    push<Op>(state, id, asked, value);
    std::copy_n(said, max_parts, answers);
  };
  const query_note* note = joined_query(state, id, pname, value);
  if (note && (!mirrors() || sys_gl<glIsQuery_op>(state)(id))) return join_answers(*note, pname, value, ask);
  if (mirrors()) return sys_gl<Op>(state)(id, pname, value);
  u64 answers[max_parts] = {};
  ask(pname, answers);
  if (value) *value = static_cast<Value>(answers[0]);
}

// The value lands in the record.
template <class Op, class Value>
void replay_result(const replay_scene& on, GLuint id, GLenum pname, Value*) {
  Value value = 0;
  entry_in<Op>(on.system)(id, pname, &value);
  answer(on, static_cast<u64>(value));
}

template <class Op, class Value>
void broadcast_result(GLuint id, GLenum pname, Value* value) {
  const __osw_thread_state* state = __osw_fetch_thread_state();
  const query_note* note = joined_query(state, id, pname, value);
  if (!note) return broadcaster<Op>()(id, pname, value);
  join_answers(*note, pname, value, [=](GLenum asked, u64* answers) {
    __osw_for_each_part(state, [=](i32 part) {
      Value own = 0;
      sys_gl<Op>(state)(id, asked, &own);
      answers[part] = static_cast<u64>(own);
    });
  });
}

}  // namespace

// The functions that are alike, with each of their names.
#define BEGIN_QUERY(function)                                        \
  void changed<function##_op>::encode(GLenum target, GLuint id) {    \
    encode_plain<changed<function##_op>, void>(target, id);          \
    begin_note(target, 0, id);                                       \
  }                                                                  \
  void changed<function##_op>::broadcast(GLenum target, GLuint id) { \
    broadcaster<function##_op>()(target, id);                        \
    begin_note(target, 0, id);                                       \
  }
BEGIN_QUERY(glBeginQuery)
BEGIN_QUERY(glBeginQueryARB)
BEGIN_QUERY(glBeginQueryEXT)
#undef BEGIN_QUERY

#define END_QUERY(function)                               \
  void changed<function##_op>::encode(GLenum target) {    \
    encode_plain<changed<function##_op>, void>(target);   \
    end_note(target, 0);                                  \
  }                                                       \
  void changed<function##_op>::broadcast(GLenum target) { \
    broadcaster<function##_op>()(target);                 \
    end_note(target, 0);                                  \
  }
END_QUERY(glEndQuery)
END_QUERY(glEndQueryARB)
END_QUERY(glEndQueryEXT)
#undef END_QUERY

#define QUERY_RESULT(function, type)                                                                  \
  void changed<function##_op>::encode(GLuint id, GLenum pname, type* value) {                         \
    encode_result<function##_op>(id, pname, value);                                                   \
  }                                                                                                   \
  void changed<function##_op>::broadcast(GLuint id, GLenum pname, type* value) {                      \
    broadcast_result<function##_op>(id, pname, value);                                                \
  }                                                                                                   \
  void changed<function##_op>::replay(const replay_scene& on, GLuint id, GLenum pname, type* value) { \
    replay_result<function##_op>(on, id, pname, value);                                               \
  }
QUERY_RESULT(glGetQueryObjectiv, GLint)
QUERY_RESULT(glGetQueryObjectuiv, GLuint)
QUERY_RESULT(glGetQueryObjectivARB, GLint)
QUERY_RESULT(glGetQueryObjectuivARB, GLuint)
QUERY_RESULT(glGetQueryObjectuivEXT, GLuint)
QUERY_RESULT(glGetQueryObjecti64v, GLint64)
QUERY_RESULT(glGetQueryObjectui64v, GLuint64)
QUERY_RESULT(glGetQueryObjecti64vEXT, GLint64)
QUERY_RESULT(glGetQueryObjectui64vEXT, GLuint64)
#undef QUERY_RESULT

void glBeginQueryIndexed_op::encode(GLenum target, GLuint index, GLuint id) {
  encode_plain<glBeginQueryIndexed_op, void>(target, index, id);
  begin_note(target, index, id);
}

void glBeginQueryIndexed_op::broadcast(GLenum target, GLuint index, GLuint id) {
  repeat_on_each_part<glBeginQueryIndexed_op>(target, index, id);
  begin_note(target, index, id);
}

void glEndQueryIndexed_op::encode(GLenum target, GLuint index) {
  encode_plain<glEndQueryIndexed_op, void>(target, index);
  end_note(target, index);
}

void glEndQueryIndexed_op::broadcast(GLenum target, GLuint index) {
  repeat_on_each_part<glEndQueryIndexed_op>(target, index);
  end_note(target, index);
}

void changed<glQueryCounter_op>::encode(GLuint id, GLenum target) {
  encode_plain<changed<glQueryCounter_op>, void>(id, target);
  note_query_counter(&__osw_fetch_thread_state()->glrc->queries, id, target);
}

void changed<glQueryCounter_op>::broadcast(GLuint id, GLenum target) {
  repeat_on_each_part<glQueryCounter_op>(id, target);
  note_query_counter(&__osw_fetch_thread_state()->glrc->queries, id, target);
}
