#include <atomic>
#include <utility>

#include "pipeline/replay.h"
#include "sequential/parts/read_pixels_part.h"
#include "startup/config/monitors.h"
#include "wgl/records/window_mapping.h"

namespace {

using replay_case = u64 (*)(__osw_thread_state* state, const __osw_proc* sys_gl, i32 part, __osw_cmd* cmd);

template <class Result, class... Parameters, std::size_t... slot>
u64 call(Result (*function)(Parameters...), const u64* args, std::index_sequence<slot...>) {
  if constexpr (std::is_void_v<Result>) {
    function(from_slot<Parameters>(args[slot])...);
    return 0;
  } else {
    return to_slot(function(from_slot<Parameters>(args[slot])...));
  }
}

template <class Result, class... Parameters>
u64 call_with_slots(Result (*function)(Parameters...), const u64* args) {
  return call(function, args, std::index_sequence_for<Parameters...>());
}

template <class Op>
u64 replay(__osw_thread_state*, const __osw_proc* sys_gl, i32, __osw_cmd* cmd) {
  return call_with_slots(entry_in<Op>(sys_gl), cmd->args);
}

// Each worker reads the share of the rectangle that its part shows, into the one buffer of the application.
template <>
u64 replay<glReadPixels_op>(__osw_thread_state* state, const __osw_proc*, i32 part, __osw_cmd* cmd) {
  const u64* args = cmd->args;
  __osw_read_pixels_part(state, part, from_slot<GLint>(args[0]), from_slot<GLint>(args[1]), from_slot<GLsizei>(args[2]),
                         from_slot<GLsizei>(args[3]), from_slot<GLenum>(args[4]), from_slot<GLenum>(args[5]),
                         from_slot<void*>(args[6]));
  return 0;
}

// The value lands in the record, and the application's own pointer stays unwritten.
template <>
u64 replay<glGetQueryObjectui64v_op>(__osw_thread_state*, const __osw_proc* sys_gl, i32, __osw_cmd* cmd) {
  entry_in<glGetQueryObjectui64v_op>(sys_gl)(from_slot<GLuint>(cmd->args[0]), from_slot<GLenum>(cmd->args[1]),
                                             reinterpret_cast<GLuint64*>(&cmd->args[2]));
  return 0;
}

// The arguments are placeholders: the part's offset is taken from the window at the time of replay.
template <>
u64 replay<glViewportOffsetZ4_op>(__osw_thread_state* state, const __osw_proc* sys_gl, i32 part, __osw_cmd*) {
  GLint x = 0;
  GLint y = 0;
  if (const __osw_window_mapping* mapping = relaxed_load(state->window_mapping)) {
    x = relaxed_load(mapping->parts[part].viewport_offset_x);
    y = relaxed_load(mapping->parts[part].viewport_offset_y);
  }
  entry_in<glViewportOffsetZ4_op>(sys_gl)(x, y);
  return 0;
}

#define GL_OP(number, function, result, parameters, arguments, sync_mode, family, alias_of) replay<function##_op>,
constexpr replay_case replay_cases[gl_op_count] = {
#include "ops/gl_ops.inc"
};
#undef GL_OP

// No worker touches a blob after it has counted itself, so the last one may free them all.
void release_blobs(__osw_cmd* cmd) {
  const u32 finished = std::atomic_ref<u32>(cmd->blob_release_count).fetch_add(1) + 1;
  if (finished == static_cast<u32>(__osw_part_count)) __osw_free_blobs_of(cmd);
}

}  // namespace

void __osw_replay_gl(__osw_thread_state* state, __osw_cmd_queue* queue, const __osw_proc* sys_gl, i32 part,
                     __osw_cmd* cmd) {
  u64 result = 0;
  if (static_cast<u32>(cmd->op) < static_cast<u32>(gl_op_count)) {
    result = replay_cases[cmd->op](state, sys_gl, part, cmd);
  }
  if (cmd->blob_mask) release_blobs(cmd);
  relaxed_store(cmd->result, result);
  relaxed_store(queue->last_result, result);
}
