#include "pipeline/push.h"

#include "pipeline/threads.h"

namespace {

void append_bare(__osw_thread_state* state, u32 type) {
  begin_cmd(state)->type = type;
  ++*state->cmd_queue->fill_count;
  __osw_flush_sync(state);
}

}  // namespace

void __osw_push_wgl_cmd(__osw_thread_state* state, i32 op, u32 arg_count, const u64* args, u32) {
  __osw_cmd* cmd = begin_cmd(state);
  __osw_cmd_queue* queue = state->cmd_queue;
  ++*queue->fill_count;
  cmd->type = __osw_cmd_wgl;
  cmd->op = op;
  for (u32 i = 0; i < arg_count; ++i) cmd->args[i] = args[i];
  cmd->arg_count = arg_count;
  cmd->blob_mask = 0;
  cmd->blob_release_count = 0;
  if (const u32 flag = queue->wgl_sync_flags[op]) {
    __osw_flush_sync(state);
    queue->last_sync_flag = flag;
  } else {
    __osw_flush_full(state);
  }
}

void __osw_send_sync_cmd(__osw_thread_state* state) {
  append_bare(state, cmd_sync);
}

void wait_for_workers(__osw_thread_state* state) {
  if (__osw_has_pipeline(state)) __osw_send_sync_cmd(state);
}

void __osw_send_exit_cmd(__osw_thread_state* state) {
  append_bare(state, __osw_cmd_exit);
}
