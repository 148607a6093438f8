// Draws from client arrays: the arrays are captured, the draw follows with the captured block in its record, and the
// application's pointers are set again behind it.
#include "threaded/draws.h"

#include <cstdlib>

#include "threaded/encoders.h"

namespace {

template <class T>
index_range scan(const void* indices, GLsizei count) {
  const auto* values = static_cast<const T*>(indices);
  T lowest = static_cast<T>(-1);
  T highest = 0;
  for (GLsizei i = 0; i < count; ++i) {
    lowest = values[i] < lowest ? values[i] : lowest;
    highest = values[i] > highest ? values[i] : highest;
  }
  if (count < 1) return {lowest, 0};
  return {lowest, u64{highest} + 1};
}

// The tail of an element draw. `push_draw` pushes it with the index pointer and the mask that it is given.
template <class Op, class PushDraw>
void encode_elements(__osw_thread_state* state, GLsizei count, GLenum type, const void* indices, PushDraw push_draw) {
  index_range range{static_cast<u32>(-1), static_cast<u32>(-1)};
  u32 mask = 0;
  if (!state->glrc->client_state.element_buffer) {
    void* copy = nullptr;
    if (indices) copy = __osw_copy_to_blob(indices, __osw_checked_bytes(count, index_bytes(type)), Op::name);
    if (indices && !copy) return;
    range = scan_indices(type, copy, copy ? count : 0);
    indices = copy;
    mask = array_blob<Op>;
  }
  captured_arrays captured;
  const u32 uncaptured = __osw_capture_arrays(state, true, range.first, range.end, &captured);
  if (captured.out_of_memory) return free(const_cast<void*>(mask ? indices : nullptr));
  mask |= carry_blobs(state, parameter_count<Op>, captured);
  push_draw(indices, mask);
  __osw_restore_arrays(state, captured);
  if (uncaptured) __osw_send_sync_cmd(state);
}

}  // namespace

index_range scan_indices(GLenum type, const void* indices, GLsizei count) {
  switch (type) {
    case GL_UNSIGNED_BYTE:
      return scan<GLubyte>(indices, count);
    case GL_UNSIGNED_SHORT:
      return scan<GLushort>(indices, count);
    case GL_UNSIGNED_INT:
      return scan<GLuint>(indices, count);
    default:
      return {};
  }
}

u32 index_bytes(GLenum type) {
  const bool is_index = type == GL_UNSIGNED_BYTE || type == GL_UNSIGNED_SHORT || type == GL_UNSIGNED_INT;
  return is_index ? __osw_gl_type_size(type) : 0;
}

u32 carry_blobs(const __osw_thread_state* state, u32 slot, const captured_arrays& captured) {
  __osw_cmd* cmd = begin_cmd(state);
  u32 mask = 0;
  for (u32 i = 0; i < captured.blob_count; ++i) {
    cmd->args[slot + i] = to_slot(captured.blobs[i]);
    mask |= 1u << (slot + i);
  }
  return mask;
}

void glDrawArrays_op::encode(GLenum mode, GLint first, GLsizei count) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  mirror<glDrawArrays_op>(state, mode, first, count);
  // One slot is left free behind the parameters, so that the block stands where an element draw has it.
  constexpr u32 blob_slot = parameter_count<glDrawElements_op>;
  captured_arrays captured{};
  u32 uncaptured = 0;
  if (first >= 0 && count > 0) {
    const u32 begin = static_cast<u32>(first);
    uncaptured = __osw_capture_arrays(state, false, begin, begin + static_cast<u32>(count), &captured);
  }
  if (captured.out_of_memory) return;
  // GL refuses it, and drivers that do not read what the application has there.
  const __osw_client_state& client_state = state->glrc->client_state;
  if (first < 0 && (client_state.enabled_mask & ~client_state.buffered_mask)) uncaptured = 1;
  const u32 mask = carry_blobs(state, blob_slot, captured);
  push_with_blobs<glDrawArrays_op>(state, mask, mode, first, count);
  __osw_restore_arrays(state, captured);
  if (uncaptured) __osw_send_sync_cmd(state);
}

void glDrawElements_op::encode(GLenum mode, GLsizei count, GLenum type, const void* indices) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  mirror<glDrawElements_op>(state, mode, count, type, indices);
  encode_elements<glDrawElements_op>(state, count, type, indices, [=](const void* copy, u32 mask) {
    push_with_blobs<glDrawElements_op>(state, mask, mode, count, type, copy);
  });
}

// The range that the application names is passed on; the scanned one is what is captured, for it is true.
void glDrawRangeElements_op::encode(GLenum mode, GLuint start, GLuint end, GLsizei count, GLenum type,
                                    const void* indices) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  mirror<glDrawRangeElements_op>(state, mode, start, end, count, type, indices);
  encode_elements<glDrawRangeElements_op>(state, count, type, indices, [=](const void* copy, u32 mask) {
    push_with_blobs<glDrawRangeElements_op>(state, mask, mode, start, end, count, type, copy);
  });
}
