// Draws on the threaded path. Those whose arrays and indices lie in buffers are commands like any other; client arrays
// are captured where it is known what the draw reads, and waited for where not.
#include "dispatch/report.h"
#include "extended/argument_copies.h"
#include "extended/vertices.h"

namespace {

template <class Op, class... Parameters>
void encode_array_draw(GLint first, GLsizei count, Parameters... arguments) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  mirror<Op>(state, arguments...);
  push_draw<Op>(state, vertices_from(first, count), 0, arguments...);
}

// `push` appends the draw with the vertices, the mask and the indices that it is given. The application's context has
// been told.
template <class Op, class Push>
void encode_indices(__osw_thread_state* state, GLsizei count, GLenum type, const void* indices, GLint base, Push push) {
  if (!reads_indices_in_memory(state)) return push(unknown_vertices, 0, indices);
  void* copy = nullptr;
  if (indices) copy = __osw_copy_to_blob(indices, __osw_checked_bytes(count, index_bytes(type)), Op::name);
  if (indices && !copy) return;
  vertex_range range = unknown_vertices;
  if (reads_vertices_in_memory(state)) range = vertices_of_indices(type, copy, count, base);
  push(range, copy ? array_blob<Op> : 0, copy);
}

// The indices of several draws in one block: the addresses of each draw's, and behind them the indices.
struct gathered_indices {
  void* block;
  bool is_whole;  // else there was no memory
};

u64 index_bytes_of(const GLsizei* counts, GLsizei draw, u32 size) {
  return counts[draw] > 0 ? (u64{size} * static_cast<u32>(counts[draw]) + 7) & ~u64{7} : 0;
}

u64 gathered_bytes(const GLsizei* counts, GLsizei draws, u32 size) {
  u64 total = static_cast<u64>(draws) * sizeof(void*);
  for (GLsizei i = 0; i < draws && total <= largest_block; ++i) total += index_bytes_of(counts, i, size);
  return total;
}

gathered_indices gather_indices(const GLsizei* counts, GLenum type, const void* const* indices, GLsizei draws,
                                const char* function) {
  if (!counts || !indices || draws < 1) return {nullptr, true};
  const u32 size = index_bytes(type);
  const u64 bytes = gathered_bytes(counts, draws, size);
  auto* block = bytes > largest_block ? nullptr : static_cast<u8*>(malloc(bytes));
  if (!block) {
    __osw_report(severity_error, "no memory for the data of %s\n", function);
    return {nullptr, false};
  }
  auto** addresses = reinterpret_cast<const void**>(block);
  u8* at = block + static_cast<u64>(draws) * sizeof(void*);
  for (GLsizei i = 0; i < draws; ++i) {
    addresses[i] = indices[i] ? at : nullptr;
    if (counts[i] > 0 && indices[i]) memcpy(at, indices[i], u64{size} * static_cast<u32>(counts[i]));
    at += index_bytes_of(counts, i, size);
  }
  return {block, true};
}

// The addresses or offsets of the indices of several draws, as the parts are to have them.
template <class Op>
const void* const* copy_index_addresses(__osw_thread_state* state, argument_copies* copies, const GLsizei* counts,
                                        GLenum type, const void* const* indices, GLsizei draws) {
  constexpr u32 slot = 3;
  if (!reads_indices_in_memory(state)) {
    return copy_argument(copies, slot, indices, __osw_checked_bytes(draws, sizeof(void*)), Op::name);
  }
  const gathered_indices gathered = gather_indices(counts, type, indices, draws, Op::name);
  copies->is_whole &= gathered.is_whole;
  if (!gathered.block) return nullptr;
  copies->cmd->args[slot] = to_slot(gathered.block);
  copies->mask |= 1u << slot;
  return static_cast<const void* const*>(gathered.block);
}

// What several draws read of arrays in memory is not captured.
template <class Op, class... Parameters>
void push_draws(__osw_thread_state* state, const argument_copies& copies, Parameters... arguments) {
  if (!copies.is_whole) return drop_copies(copies);
  push_draw<Op>(state, unknown_vertices, copies.mask, arguments...);
}

}  // namespace

void changed<glDrawArrays_op>::encode(GLenum mode, GLint first, GLsizei count) {
  encode_array_draw<glDrawArrays_op>(first, count, mode, first, count);
}

void changed<glDrawArraysEXT_op>::encode(GLenum mode, GLint first, GLsizei count) {
  encode_array_draw<changed>(first, count, mode, first, count);
}

void changed<glDrawArraysInstanced_op>::encode(GLenum mode, GLint first, GLsizei count, GLsizei instancecount) {
  encode_array_draw<changed>(first, count, mode, first, count, instancecount);
}

void glDrawArraysInstancedBaseInstance_op::encode(GLenum mode, GLint first, GLsizei count, GLsizei instancecount,
                                                  GLuint baseinstance) {
  encode_array_draw<glDrawArraysInstancedBaseInstance_op>(first, count, mode, first, count, instancecount,
                                                          baseinstance);
}

void changed<glDrawElements_op>::encode(GLenum mode, GLsizei count, GLenum type, const void* indices) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  mirror<changed>(state, mode, count, type, indices);
  const auto send = [=](const vertex_range& range, u32 mask, const void* copy) {
    push_draw<changed>(state, range, mask, mode, count, type, copy);
  };
  encode_indices<changed>(state, count, type, indices, 0, send);
}

void changed<glDrawRangeElements_op>::encode(GLenum mode, GLuint start, GLuint end, GLsizei count, GLenum type,
                                             const void* indices) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  mirror<changed>(state, mode, start, end, count, type, indices);
  const auto send = [=](const vertex_range& range, u32 mask, const void* copy) {
    push_draw<changed>(state, range, mask, mode, start, end, count, type, copy);
  };
  encode_indices<changed>(state, count, type, indices, 0, send);
}

void changed<glDrawElementsBaseVertex_op>::encode(GLenum mode, GLsizei count, GLenum type, const void* indices,
                                                  GLint basevertex) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  mirror<changed>(state, mode, count, type, indices, basevertex);
  const auto send = [=](const vertex_range& range, u32 mask, const void* copy) {
    push_draw<changed>(state, range, mask, mode, count, type, copy, basevertex);
  };
  encode_indices<changed>(state, count, type, indices, basevertex, send);
}

void changed<glDrawRangeElementsBaseVertex_op>::encode(GLenum mode, GLuint start, GLuint end, GLsizei count,
                                                       GLenum type, const void* indices, GLint basevertex) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  mirror<changed>(state, mode, start, end, count, type, indices, basevertex);
  const auto send = [=](const vertex_range& range, u32 mask, const void* copy) {
    push_draw<changed>(state, range, mask, mode, start, end, count, type, copy, basevertex);
  };
  encode_indices<changed>(state, count, type, indices, basevertex, send);
}

void changed<glDrawElementsInstanced_op>::encode(GLenum mode, GLsizei count, GLenum type, const void* indices,
                                                 GLsizei instancecount) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  mirror<changed>(state, mode, count, type, indices, instancecount);
  const auto send = [=](const vertex_range& range, u32 mask, const void* copy) {
    push_draw<changed>(state, range, mask, mode, count, type, copy, instancecount);
  };
  encode_indices<changed>(state, count, type, indices, 0, send);
}

void changed<glDrawElementsInstancedBaseVertex_op>::encode(GLenum mode, GLsizei count, GLenum type, const void* indices,
                                                           GLsizei instancecount, GLint basevertex) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  mirror<changed>(state, mode, count, type, indices, instancecount, basevertex);
  const auto send = [=](const vertex_range& range, u32 mask, const void* copy) {
    push_draw<changed>(state, range, mask, mode, count, type, copy, instancecount, basevertex);
  };
  encode_indices<changed>(state, count, type, indices, basevertex, send);
}

void glDrawElementsInstancedBaseInstance_op::encode(GLenum mode, GLsizei count, GLenum type, const void* indices,
                                                    GLsizei instancecount, GLuint baseinstance) {
  using op = glDrawElementsInstancedBaseInstance_op;
  __osw_thread_state* state = __osw_fetch_thread_state();
  mirror<op>(state, mode, count, type, indices, instancecount, baseinstance);
  const auto send = [=](const vertex_range& range, u32 mask, const void* copy) {
    push_draw<op>(state, range, mask, mode, count, type, copy, instancecount, baseinstance);
  };
  encode_indices<op>(state, count, type, indices, 0, send);
}

void glDrawElementsInstancedBaseVertexBaseInstance_op::encode(GLenum mode, GLsizei count, GLenum type,
                                                              const void* indices, GLsizei instancecount,
                                                              GLint basevertex, GLuint baseinstance) {
  using op = glDrawElementsInstancedBaseVertexBaseInstance_op;
  __osw_thread_state* state = __osw_fetch_thread_state();
  mirror<op>(state, mode, count, type, indices, instancecount, basevertex, baseinstance);
  const auto send = [=](const vertex_range& range, u32 mask, const void* copy) {
    push_draw<op>(state, range, mask, mode, count, type, copy, instancecount, basevertex, baseinstance);
  };
  encode_indices<op>(state, count, type, indices, basevertex, send);
}

void changed<glMultiDrawArrays_op>::encode(GLenum mode, const GLint* first, const GLsizei* count, GLsizei drawcount) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  mirror<changed>(state, mode, first, count, drawcount);
  argument_copies copies = begin_copies<changed>(state);
  const u64 bytes = __osw_checked_bytes(drawcount, sizeof(GLint));
  const GLint* firsts = copy_argument(&copies, 1, first, bytes, name);
  const GLsizei* counts = copy_argument(&copies, 2, count, bytes, name);
  push_draws<changed>(state, copies, mode, firsts, counts, drawcount);
}

void changed<glMultiDrawElements_op>::encode(GLenum mode, const GLsizei* count, GLenum type, const void* const* indices,
                                             GLsizei drawcount) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  mirror<changed>(state, mode, count, type, indices, drawcount);
  argument_copies copies = begin_copies<changed>(state);
  const GLsizei* counts = copy_argument(&copies, 1, count, __osw_checked_bytes(drawcount, sizeof(GLsizei)), name);
  const void* const* addresses = copy_index_addresses<changed>(state, &copies, count, type, indices, drawcount);
  push_draws<changed>(state, copies, mode, counts, type, addresses, drawcount);
}

void changed<glMultiDrawElementsBaseVertex_op>::encode(GLenum mode, const GLsizei* count, GLenum type,
                                                       const void* const* indices, GLsizei drawcount,
                                                       const GLint* basevertex) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  mirror<changed>(state, mode, count, type, indices, drawcount, basevertex);
  argument_copies copies = begin_copies<changed>(state);
  const u64 bytes = __osw_checked_bytes(drawcount, sizeof(GLint));
  const GLsizei* counts = copy_argument(&copies, 1, count, bytes, name);
  const void* const* addresses = copy_index_addresses<changed>(state, &copies, count, type, indices, drawcount);
  const GLint* bases = copy_argument(&copies, 5, basevertex, bytes, name);
  push_draws<changed>(state, copies, mode, counts, type, addresses, drawcount, bases);
}
