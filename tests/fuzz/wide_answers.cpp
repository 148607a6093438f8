// What the program hears of fences and queries, of which each part has its own: the worst answer of a fence, and of a
// query what all of the window together comes to.
#include <algorithm>
#include <cstring>
#include <limits>

#include "wide_expectation.h"

namespace fuzz {

namespace {

using arguments_of = const driver::argument_bits&;

GLenum name(u64 bits) {
  return static_cast<GLenum>(bits);
}

u32 badness(GLenum answer) {
  switch (answer) {
    case GL_ALREADY_SIGNALED:
      return 0;
    case GL_CONDITION_SATISFIED:
      return 1;
    case GL_TIMEOUT_EXPIRED:
      return 2;
    default:
      return 3;
  }
}

outcome expect_wait(const wide_expectation& all, u64 handle) {
  const auto fence = all.fences.find(handle);
  if (fence == all.fences.end()) return {.knows_result = true, .result = GL_WAIT_FAILED};
  GLenum worst = GL_ALREADY_SIGNALED;
  for (int part = 0; part < all.parts; ++part) {
    const GLenum answer = wait_answer(part, fence->second);
    if (badness(answer) > badness(worst)) worst = answer;
  }
  return {.knows_result = true, .result = worst};
}

template <class T>
outcome written(u64 at, T value) {
  outcome made;
  made.written.at = at;
  made.written.bytes.resize(sizeof value);
  std::memcpy(made.written.bytes.data(), &value, sizeof value);
  return made;
}

outcome expect_status(const wide_expectation& all, arguments_of a) {
  const auto fence = all.fences.find(a[0]);
  if (fence == all.fences.end() || name(a[1]) != GL_SYNC_STATUS || static_cast<i32>(a[2]) < 1) return {};
  bool is_signaled = true;
  for (int part = 0; part < all.parts; ++part) is_signaled &= sync_status(part, fence->second) == GL_SIGNALED;
  return written(a[4], is_signaled ? GL_SIGNALED : GL_UNSIGNALED);
}

// ---- queries ----

bool is_available(const wide_expectation& all, GLuint id) {
  for (int part = 0; part < all.parts; ++part) {
    if (!query_answer(part, id, GL_QUERY_RESULT_AVAILABLE)) return false;
  }
  return true;
}

u64 joined(const wide_expectation& all, const query_fact& query, GLuint id) {
  u64 sum = 0;
  u64 largest = 0;
  for (int part = 0; part < all.parts; ++part) {
    const u64 answer = query_answer(part, id, GL_QUERY_RESULT);
    sum += answer;
    largest = std::max(largest, answer);
  }
  const u64 first = query_answer(0, id, GL_QUERY_RESULT);
  switch (query.target) {
    case GL_SAMPLES_PASSED:
      return query.in_window ? sum : first;
    case GL_ANY_SAMPLES_PASSED:
    case GL_ANY_SAMPLES_PASSED_CONSERVATIVE:
      return query.in_window ? sum != 0 : first;
    case GL_TIME_ELAPSED:
    case GL_TIMESTAMP:
      return largest;
    default:
      return first;
  }
}

bool is_long(int op) {
  return op == glGetQueryObjecti64v_op::op || op == glGetQueryObjecti64vEXT_op::op ||
         op == glGetQueryObjectui64v_op::op || op == glGetQueryObjectui64vEXT_op::op;
}

void end_query(wide_expectation* all, GLenum target) {
  for (auto& [id, query] : all->queries) {
    if (!query.is_active || query.target != target) continue;
    query.is_active = false;
    query.in_window |= all->part.draw_framebuffer == 0;
  }
}

}  // namespace

outcome expect_fence_answer(const wide_expectation& all, int op, arguments_of a) {
  if (op == glClientWaitSync_op::op) return expect_wait(all, a[0]);
  if (op == glIsSync_op::op) return {.knows_result = true, .result = all.fences.contains(a[0])};
  if (op == glGetSynciv_op::op) return expect_status(all, a);
  return {};
}

bool asks_query(int op) {
  constexpr int asking[] = {
      glGetQueryObjectiv_op::op,     glGetQueryObjectuiv_op::op,     glGetQueryObjecti64v_op::op,
      glGetQueryObjectui64v_op::op,  glGetQueryObjectivARB_op::op,   glGetQueryObjectuivARB_op::op,
      glGetQueryObjectuivEXT_op::op, glGetQueryObjecti64vEXT_op::op, glGetQueryObjectui64vEXT_op::op};
  return std::ranges::find(asking, op) != std::end(asking);
}

outcome expect_query_answer(const wide_expectation& all, int op, arguments_of a) {
  const auto query = all.queries.find(name(a[0]));
  if (query == all.queries.end() || query->second.is_active || !a[2]) return {};
  const bool is_there = is_available(all, query->first);
  u64 value = joined(all, query->second, query->first);
  if (name(a[1]) == GL_QUERY_RESULT_AVAILABLE) value = is_there;
  if (name(a[1]) == GL_QUERY_RESULT_NO_WAIT && !is_there) return {};
  return is_long(op) ? written(a[2], value) : written(a[2], static_cast<GLuint>(value));
}

void note_query(wide_expectation* all, int op, arguments_of a) {
  const bool in_window = all->part.draw_framebuffer == 0;
  switch (op) {
    case glBeginQueryIndexed_op::op:
      all->queries[name(a[2])] = {name(a[0]), in_window, true};
      return;
    case glQueryCounter_op::op:
      all->queries[name(a[0])] = {name(a[1]), in_window, false};
      return;
    case glEndQuery_op::op:
    case glEndQueryARB_op::op:
    case glEndQueryEXT_op::op:
    case glEndQueryIndexed_op::op:
      return end_query(all, name(a[0]));
    default:
      all->queries[name(a[1])] = {name(a[0]), in_window, true};
  }
}

}  // namespace fuzz
