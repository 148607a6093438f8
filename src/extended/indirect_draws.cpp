// Draws and dispatches whose figures lie in a buffer, or in memory where a compatibility context lets them.
//
// The application's own context has no contents in its buffers. So it is told of such a call as one of no draws: it
// refuses what GL refuses, and does not draw by figures that are none.
#include "extended/argument_copies.h"
#include "extended/vertices.h"

namespace {

constexpr u32 array_draw_bytes = 4 * sizeof(GLuint);
constexpr u32 element_draw_bytes = 5 * sizeof(GLuint);

// Bytes that draws take their figures from; 0 for calls that GL refuses.
u64 figure_bytes(GLsizei draws, GLsizei stride, u32 size) {
  if (draws < 1 || stride < 0 || stride % static_cast<i32>(sizeof(GLuint))) return 0;
  const u64 step = stride ? static_cast<u32>(stride) : size;
  const u64 bytes = static_cast<u64>(draws - 1) * step + size;
  return bytes > largest_block ? too_many_bytes : bytes;
}

bool reads_figures_in_memory(const __osw_thread_state* state) {
  return !state->glrc->is_core && !state->glrc->client_state.indirect_buffer;
}

// Whether the application's own context puts what is called into a display list.
bool compiles_list(const __osw_thread_state* state) {
  if (state->glrc->is_core) return false;
  GLint list = 0;
  sys_gl<glGetIntegerv_op>(state)(GL_LIST_INDEX, &list);
  return list != 0;
}

// `push` appends the draw with the address that it is given. The application's context has been told.
template <class Op, class Push>
void encode_figures(__osw_thread_state* state, const void* indirect, u64 bytes, Push push) {
  if (!reads_figures_in_memory(state)) return push(indirect, 0);
  argument_copies copies = begin_copies<Op>(state);
  const void* copy = copy_argument(&copies, array_slot<Op>, indirect, bytes, Op::name);
  if (copies.is_whole) push(copy, copies.mask);
}

}  // namespace

void glDrawArraysIndirect_op::encode(GLenum mode, const void* indirect) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  if (sys_gl<glMultiDrawArraysIndirect_op>(state)) mirror<glMultiDrawArraysIndirect_op>(state, mode, indirect, 0, 0);
  encode_figures<glDrawArraysIndirect_op>(state, indirect, array_draw_bytes, [=](const void* copy, u32 mask) {
    push_draw<glDrawArraysIndirect_op>(state, unknown_vertices, mask, mode, copy);
  });
}

void glDrawElementsIndirect_op::encode(GLenum mode, GLenum type, const void* indirect) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  if (sys_gl<glMultiDrawElementsIndirect_op>(state)) {
    mirror<glMultiDrawElementsIndirect_op>(state, mode, type, indirect, 0, 0);
  }
  encode_figures<glDrawElementsIndirect_op>(state, indirect, element_draw_bytes, [=](const void* copy, u32 mask) {
    push_draw<glDrawElementsIndirect_op>(state, unknown_vertices, mask, mode, type, copy);
  });
}

void glMultiDrawArraysIndirect_op::encode(GLenum mode, const void* indirect, GLsizei drawcount, GLsizei stride) {
  using op = glMultiDrawArraysIndirect_op;
  __osw_thread_state* state = __osw_fetch_thread_state();
  mirror<op>(state, mode, indirect, drawcount < 0 ? drawcount : 0, stride);
  encode_figures<op>(
      state, indirect, figure_bytes(drawcount, stride, array_draw_bytes),
      [=](const void* copy, u32 mask) { push_draw<op>(state, unknown_vertices, mask, mode, copy, drawcount, stride); });
}

void glMultiDrawElementsIndirect_op::encode(GLenum mode, GLenum type, const void* indirect, GLsizei drawcount,
                                            GLsizei stride) {
  using op = glMultiDrawElementsIndirect_op;
  __osw_thread_state* state = __osw_fetch_thread_state();
  mirror<op>(state, mode, type, indirect, drawcount < 0 ? drawcount : 0, stride);
  encode_figures<op>(state, indirect, figure_bytes(drawcount, stride, element_draw_bytes),
                     [=](const void* copy, u32 mask) {
                       push_draw<op>(state, unknown_vertices, mask, mode, type, copy, drawcount, stride);
                     });
}

void glMultiDrawArraysIndirectCount_op::encode(GLenum mode, const void* indirect, GLintptr drawcount,
                                               GLsizei maxdrawcount, GLsizei stride) {
  using op = glMultiDrawArraysIndirectCount_op;
  __osw_thread_state* state = __osw_fetch_thread_state();
  mirror<op>(state, mode, indirect, drawcount, maxdrawcount < 0 ? maxdrawcount : 0, stride);
  encode_figures<op>(state, indirect, figure_bytes(maxdrawcount, stride, array_draw_bytes),
                     [=](const void* copy, u32 mask) {
                       push_draw<op>(state, unknown_vertices, mask, mode, copy, drawcount, maxdrawcount, stride);
                     });
}

void glMultiDrawElementsIndirectCount_op::encode(GLenum mode, GLenum type, const void* indirect, GLintptr drawcount,
                                                 GLsizei maxdrawcount, GLsizei stride) {
  using op = glMultiDrawElementsIndirectCount_op;
  __osw_thread_state* state = __osw_fetch_thread_state();
  mirror<op>(state, mode, type, indirect, drawcount, maxdrawcount < 0 ? maxdrawcount : 0, stride);
  encode_figures<op>(state, indirect, figure_bytes(maxdrawcount, stride, element_draw_bytes),
                     [=](const void* copy, u32 mask) {
                       push_draw<op>(state, unknown_vertices, mask, mode, type, copy, drawcount, maxdrawcount, stride);
                     });
}

// No group is dispatched there, but one of no groups tells whether there is a program. A display list takes none whose
// figures lie in a buffer, and one of no groups would be taken.
void glDispatchComputeIndirect_op::encode(GLintptr indirect) {
  using op = glDispatchComputeIndirect_op;
  __osw_thread_state* state = __osw_fetch_thread_state();
  if (mirrors() && compiles_list(state)) return sys_gl<op>(state)(indirect);
  if (sys_gl<glDispatchCompute_op>(state)) mirror<glDispatchCompute_op>(state, 0u, 0u, 0u);
  push<op>(state, indirect);
}
