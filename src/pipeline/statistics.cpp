#include "pipeline/statistics.h"

#include <cstring>

#include "dispatch/report.h"
#include "pipeline/cmd_queue.h"

u32 __osw_print_sync_info_enabled = OSW_STATISTICS;
u32 __osw_print_sync_on_swap = OSW_STATISTICS;

namespace {

void print_count(const char* label, u32 count) {
  __osw_report(severity_info, "%s sync num: %d\n", label, static_cast<int>(count));
}

u32 print_counts(const char* const* labels, const u32* counts, int op_count) {
  u32 sum = 0;
  for (int op = 0; op < op_count; ++op) {
    if (counts[op]) print_count(labels[op], counts[op]);
    sum += counts[op];
  }
  return sum;
}

}  // namespace

void __osw_print_sync_info(const __osw_thread_state* state) {
  const __osw_cmd_queue* queue = state->cmd_queue;
  if (!queue || !__osw_print_sync_info_enabled) return;
  __osw_report(severity_info, "sync info (thread id = %d, hdc = 0x%p, hglrc = 0x%p, total %d frames):\n",
               static_cast<int>(state->thread_id), static_cast<void*>(state->current_hdc),
               static_cast<void*>(state->current_hglrc), state->frame_count);
  const u32 wgl_sum = print_counts(queue->wgl_op_names, queue->wgl_sync_count, wgl_op_count);
  u32 gl_sum = print_counts(queue->gl_op_names, queue->gl_sync_count, gl_op_count);
  gl_sum += print_counts(queue->gl_op_names + gl_op_count, queue->wide_sync_count, gl_ops_in_use - gl_op_count);
  print_count("__osw_send_sync_cmd", queue->send_sync_count);
  __osw_report(severity_info, "cmd buffer full num: %d (cmd buf size = %d)\n", static_cast<int>(queue->full_count),
               static_cast<int>(cmd_list_limit));
  __osw_report(severity_info, "total frames %d, api sync num: %d, cmd full sync num: %d\n", state->frame_count,
               static_cast<int>(queue->send_sync_count + gl_sum + wgl_sum), static_cast<int>(queue->full_count));
}

void __osw_reset_sync_info(__osw_thread_state* state) {
  state->frame_count = 0;
  __osw_cmd_queue* queue = state->cmd_queue;
  if (!queue) return;
  memset(queue->wgl_sync_count, 0, sizeof queue->wgl_sync_count);
  memset(queue->gl_sync_count, 0, sizeof queue->gl_sync_count);
  memset(queue->wide_sync_count, 0, sizeof queue->wide_sync_count);
  queue->send_sync_count = 0;
  queue->full_count = 0;
}
