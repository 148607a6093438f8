#include <atomic>

#include "pipeline/replay.h"
#include "pipeline/replay_case.h"
#include "sequential/parts/read_pixels_part.h"
#include "startup/config/monitors.h"
#include "wgl/records/window_mapping.h"

namespace {

// By op, in the form that the op has in this mode. Filled at process attach, constant afterwards.
replay_case gl_cases[gl_all_count];

// Of an op without handlers there are no commands, nor of one that is the application's context's alone.
u64 replay_nothing(__osw_thread_state*, const __osw_proc*, i32, __osw_cmd*) {
  return 0;
}

template <class Op>
constexpr replay_case case_or_nothing() {
  if constexpr (makes_commands<Op>) {
    return case_of<Op>();
  } else {
    return replay_nothing;
  }
}

// No worker touches a blob after it has counted itself, so the last one may free them all.
void release_blobs(__osw_cmd* cmd) {
  const u32 finished = std::atomic_ref<u32>(cmd->blob_release_count).fetch_add(1) + 1;
  if (finished == static_cast<u32>(__osw_part_count)) __osw_free_blobs_of(cmd);
}

}  // namespace

// Each worker reads the share of the rectangle that its part shows, into the one buffer of the application.
void glReadPixels_op::replay(const replay_scene& on, GLint x, GLint y, GLsizei width, GLsizei height, GLenum format,
                             GLenum component_type, void* pixels) {
  __osw_read_pixels_part(on.state, on.part, x, y, width, height, format, component_type, pixels);
}

// The value lands in the record, and the application's own pointer stays unwritten.
void glGetQueryObjectui64v_op::replay(const replay_scene& on, GLuint id, GLenum pname, GLuint64*) {
  u64* kept = &on.cmd->args[array_slot<glGetQueryObjectui64v_op>];
  entry_in<glGetQueryObjectui64v_op>(on.system)(id, pname, reinterpret_cast<GLuint64*>(kept));
}

// The arguments are placeholders: the part's offset is taken from the window at the time of replay.
void glViewportOffsetZ4_op::replay(const replay_scene& on, GLint, GLint) {
  GLint x = 0;
  GLint y = 0;
  if (const __osw_window_mapping* mapping = relaxed_load(on.state->window_mapping)) {
    x = relaxed_load(mapping->parts[on.part].viewport_offset_x);
    y = relaxed_load(mapping->parts[on.part].viewport_offset_y);
  }
  entry_in<glViewportOffsetZ4_op>(on.system)(x, y);
}

void fill_gl_cases() {
  for_each_gl_form_in_use([]<class Op>() { gl_cases[Op::op] = case_or_nothing<Op>(); });
}

void __osw_replay_gl(__osw_thread_state* state, __osw_cmd_queue* queue, const __osw_proc* sys_gl, i32 part,
                     __osw_cmd* cmd) {
  u64 result = 0;
  if (static_cast<u32>(cmd->op) < static_cast<u32>(gl_ops_in_use)) {
    result = gl_cases[cmd->op](state, sys_gl, part, cmd);
  }
  if (cmd->blob_mask) release_blobs(cmd);
  relaxed_store(cmd->result, result);
  relaxed_store(queue->last_result, result);
}
