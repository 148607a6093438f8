#include "pipeline/handshake.h"
#include "pipeline/replay.h"
#include "pipeline/threads.h"

namespace {

// The last record of a replayed list: what the worker does next depends on it alone, because a command that someone
// waits for always closes its list.
struct last_record {
  u32 type;
  i32 op;
};

last_record replay_list(__osw_thread_state* state, __osw_cmd_queue* queue, i32 part) {
  __osw_cmd* list = *queue->read_list;
  const u32 count = *queue->read_count;
  last_record last{0, -1};
  for (u32 i = 0; i < count; ++i) {
    __osw_cmd* cmd = &list[i];
    last.type = cmd->type;
    if (cmd->type == __osw_cmd_gl) {
      last.op = cmd->op;
      __osw_replay_gl(state, queue, relaxed_load(state->sys_gl), part, cmd);
    } else if (cmd->type == __osw_cmd_wgl) {
      last.op = cmd->op;
      __osw_replay_wgl(state, queue, relaxed_load(state->sys_wgl), part, cmd);
    }
  }
  return last;
}

bool issuing_thread_waits(const __osw_cmd_queue* queue, const last_record& last) {
  if (last.type == __osw_cmd_gl) return queue->gl_sync_flags[last.op];
  if (last.type == __osw_cmd_wgl) return queue->wgl_sync_flags[last.op];
  return last.type == cmd_sync;
}

}  // namespace

DWORD WINAPI __osw_worker_main(void* start) {
  auto* arg = static_cast<__osw_worker_arg*>(start);
  __osw_thread_state* state = arg->state;
  __osw_cmd_queue* queue = state->cmd_queue;
  const i32 part = arg->part;
  const u32 bit = 1u << part;
  bool goes_on = true;
  while (goes_on) {
    const last_record last = replay_list(state, queue, part);
    if (issuing_thread_waits(queue, last)) report_replayed(queue, bit);
    if (last.type == __osw_cmd_exit) {
      report_left(queue, bit);
      goes_on = false;
    } else {
      report_done(queue, bit);
      goes_on = wait_for_start(queue, bit);
    }
  }
  __osw_unregister_worker_arg(arg);
  __osw_release_queue(queue);
  return 0;
}
