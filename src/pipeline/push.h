// Appending commands to the calling thread's list. Only the issuing thread, which has a queue; no lock.
#pragma once

#include "pipeline/flush.h"
#include "wgl/records/known_buffers.h"

// Appends a GL command with `arg_count` slots, whose blobs `blob_mask` names, then waits for its replay when the op is
// synchronous, or hands the list over when it is full. What an encoder has put in the record's later slots stays.
inline void __osw_push_gl_cmd(__osw_thread_state* state, i32 op, u32 arg_count, const u64* args, u32 blob_mask) {
  if (may_change_buffers(op) && has_known_buffers()) note_buffer_change(state, op, args);
  __osw_cmd* cmd = begin_cmd(state);
  __osw_cmd_queue* queue = state->cmd_queue;
  ++*queue->fill_count;
  cmd->type = __osw_cmd_gl;
  cmd->op = op;
  for (u32 i = 0; i < arg_count; ++i) cmd->args[i] = args[i];
  cmd->arg_count = arg_count;
  cmd->blob_mask = blob_mask;
  cmd->blob_release_count = 0;
  if (const u32 flag = queue->gl_sync_flags[op]) {
    __osw_flush_sync(state);
    queue->last_sync_flag = flag;
  } else {
    __osw_flush_full(state);
  }
}

// The same for a wgl command, which has no blobs. `reserved` is 0.
void __osw_push_wgl_cmd(__osw_thread_state* state, i32 op, u32 arg_count, const u64* args, u32 reserved);

// Appends a command that does nothing and waits until the workers have replayed all that came before it.
void __osw_send_sync_cmd(__osw_thread_state* state);

// The same, and nothing on a thread without workers.
void wait_for_workers(__osw_thread_state* state);

// Appends the command that ends the workers, and waits until the swap thread has seen them all take it.
void __osw_send_exit_cmd(__osw_thread_state* state);
