#include "pipeline/flush.h"

#include "pipeline/handshake.h"

namespace {

u32* gl_count_of(__osw_cmd_queue* queue, i32 op) {
  return op < gl_op_count ? &queue->gl_sync_count[op] : &queue->wide_sync_count[op - gl_op_count];
}

void count_sync(__osw_cmd_queue* queue) {
  const __osw_cmd& last = (*queue->fill_list)[*queue->fill_count - 1];
  if (last.type == __osw_cmd_wgl) ++queue->wgl_sync_count[last.op];
  if (last.type == __osw_cmd_gl) ++*gl_count_of(queue, last.op);
  if (last.type == cmd_sync) ++queue->send_sync_count;
}

// With no part there is no worker to replay the list, and no swap thread stays to exchange it.
void drop_list(__osw_cmd_queue* queue) {
  __osw_free_cmd_blobs(queue);
  *queue->fill_count = 0;
}

// The threads have been stopped, wherever they were: from now on it is as if there were no parts.
void give_up(__osw_cmd_queue* queue) {
  queue->worker_bits = 0;
  drop_list(queue);
}

void report_list(const __osw_thread_state* state, list_report report) {
  __osw_cmd_queue* queue = state->cmd_queue;
  if (queue->report == list_kept) {
    if (!*queue->fill_count) return;
    if (!queue->worker_bits) return drop_list(queue);
    report_done(queue, queue->app_bit);
  }
  if (queue->report < report) queue->report = report;
}

void hand_over(const __osw_thread_state* state) {
  __osw_cmd_queue* queue = state->cmd_queue;
  if (!queue->worker_bits) return drop_list(queue);
  report_done(queue, queue->app_bit);
  if (!wait_for_flip(queue, state->started.swap_thread)) give_up(queue);
}

}  // namespace

void __osw_flush_sync(__osw_thread_state* state) {
  __osw_cmd_queue* queue = state->cmd_queue;
  count_sync(queue);
  if (!queue->worker_bits) return drop_list(queue);
  report_done(queue, queue->app_bit);
  if (!wait_for_replay(queue, state->started.swap_thread)) return give_up(queue);
  // Every worker has reported, so the flip that started them has passed and opened the start for this thread too.
  close_start(queue);
}

void __osw_hand_over_full(__osw_thread_state* state) {
  ++state->cmd_queue->full_count;
  hand_over(state);
}

void finish_list(__osw_thread_state* state) {
  report_list(state, list_finished);
}

void offer_list(__osw_thread_state* state) {
  report_list(state, list_offered);
}

void take_list(const __osw_thread_state* state) {
  __osw_cmd_queue* queue = state->cmd_queue;
  const u32 report = queue->report;
  queue->report = list_kept;
  if (report == list_offered && take_report_back(queue, queue->app_bit)) return;
  if (!wait_for_flip(queue, state->started.swap_thread)) give_up(queue);
}
