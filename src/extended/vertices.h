// What draws read of the program's memory besides their indices: the vertices of enabled arrays that lie in no buffer.
// On the issuing thread, on the threaded path.
#pragma once

#include "threaded/draws.h"
#include "threaded/encoders.h"

// The vertices that a draw reads, as far as that is known. `end` is one past the last.
struct vertex_range {
  bool is_known;
  u32 first;
  u64 end;
};
constexpr vertex_range unknown_vertices = {false, 0, 0};

// The vertices of `count` from `first` on.
vertex_range vertices_from(GLint first, GLsizei count);

// Those that `count` indices name, which are counted on from `base`.
vertex_range vertices_of_indices(GLenum type, const void* indices, GLsizei count, GLint base);

// Whether a draw reads arrays in memory.
bool reads_vertices_in_memory(const __osw_thread_state* state);

// Whether indices come from memory. Where that is not known the draw is waited for.
bool reads_indices_in_memory(const __osw_thread_state* state);

// Whether each enabled array in memory is one that can be copied; its stride and reach are told then.
bool measure_arrays_in_memory(const __osw_thread_state* state);

// Copies the vertices and aims the workers' arrays at them. Result: whether that could be done, so that nobody waits.
bool capture_vertices(__osw_thread_state* state, const vertex_range& range, captured_arrays* captured);

// Appends a draw, which has been mirrored. `mask` names the slots that are blocks already; they are freed when there is
// no memory for the vertices.
template <class Op, class... Parameters>
void push_draw(__osw_thread_state* state, const vertex_range& range, u32 mask, Parameters... arguments) {
  if (!reads_vertices_in_memory(state)) return push_with_blobs<Op>(state, mask, arguments...);
  captured_arrays captured{};
  const bool is_captured = capture_vertices(state, range, &captured);
  if (captured.out_of_memory) {
    const u64 slots[] = {to_slot(arguments)...};
    for (u32 rest = mask; rest; rest &= rest - 1) free(from_slot<void*>(slots[__builtin_ctz(rest)]));
    return;
  }
  const u32 blobs = carry_blobs(state, sizeof...(Parameters), captured);
  push_with_blobs<Op>(state, mask | blobs, arguments...);
  __osw_restore_arrays(state, captured);
  if (!is_captured) __osw_send_sync_cmd(state);
}
