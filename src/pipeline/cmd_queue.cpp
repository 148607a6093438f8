#include "pipeline/cmd_queue.h"

#include <atomic>
#include <cstdlib>

#include "startup/config/monitors.h"

namespace {

void set_masks(__osw_cmd_queue* queue) {
  queue->start_mask = 0xFFFFFFFF;
  queue->app_bit = app_mask_bit;
  queue->worker_bits = __osw_part_count > 0 ? (1u << __osw_part_count) - 1 : 0;
  queue->all_bits = queue->worker_bits | app_mask_bit;
  queue->last_sync_flag = 1;
}

void set_op_tables(__osw_cmd_queue* queue) {
  if (!__osw_wgl_sync_filled) __osw_fill_wgl_sync();
  if (!__osw_gl_sync_filled) __osw_fill_gl_sync();
  queue->wgl_sync_flags = __osw_wgl_sync_flags;
  queue->gl_sync_flags = __osw_gl_sync_flags;
  queue->wgl_op_names = __osw_wgl_op_names;
  queue->gl_op_names = __osw_gl_op_names;
}

// The workers' first list is the empty one.
bool set_lists(__osw_cmd_queue* queue) {
  queue->list_limit = cmd_list_limit;
  queue->list_a = static_cast<__osw_cmd*>(calloc(cmd_list_limit + cmd_list_margin, sizeof(__osw_cmd)));
  queue->list_b = static_cast<__osw_cmd*>(calloc(queue->list_limit + cmd_list_margin, sizeof(__osw_cmd)));
  queue->fill_list = &queue->list_b;
  queue->fill_count = &queue->count_b;
  queue->read_list = &queue->list_a;
  queue->read_count = &queue->count_a;
  return queue->list_a && queue->list_b;
}

void init_locks(__osw_cmd_queue* queue) {
  InitializeCriticalSection(&queue->start_lock);
  InitializeCriticalSection(&queue->done_lock);
  InitializeCriticalSection(&queue->sync_lock);
  InitializeConditionVariable(&queue->start_cond);
  InitializeConditionVariable(&queue->done_cond);
  InitializeConditionVariable(&queue->sync_cond);
}

void free_lists_and_queue(__osw_cmd_queue* queue) {
  __osw_thread_state* owner = queue->owner;
  free(queue->list_a);
  free(queue->list_b);
  free(queue);
  free(owner);
}

void destroy_queue(__osw_cmd_queue* queue) {
  DeleteCriticalSection(&queue->start_lock);
  DeleteCriticalSection(&queue->done_lock);
  DeleteCriticalSection(&queue->sync_lock);
  __osw_free_cmd_blobs(queue);
  free_lists_and_queue(queue);
}

void free_blobs_of_list(__osw_cmd* list, u32 count) {
  for (u32 i = 0; i < count; ++i) {
    if (list[i].type != __osw_cmd_gl) continue;
    std::atomic_ref<u32>(list[i].blob_release_count).fetch_add(1);
    __osw_free_blobs_of(&list[i]);
  }
}

}  // namespace

u32 __osw_create_cmd_queue(__osw_thread_state* state) {
  if (state->cmd_queue) return 1;
  auto* queue = static_cast<__osw_cmd_queue*>(calloc(1, sizeof(__osw_cmd_queue)));
  if (!queue) return 0;
  set_masks(queue);
  set_op_tables(queue);
  if (!set_lists(queue)) {
    free_lists_and_queue(queue);
    return 0;
  }
  init_locks(queue);
  queue->users = 1;
  state->cmd_queue = queue;
  return 1;
}

void __osw_retain_queue(__osw_cmd_queue* queue) {
  std::atomic_ref<u32>(queue->users).fetch_add(1);
}

void __osw_release_queue(__osw_cmd_queue* queue) {
  if (std::atomic_ref<u32>(queue->users).fetch_sub(1) == 1) destroy_queue(queue);
}

void __osw_free_cmd_blobs(__osw_cmd_queue* queue) {
  free_blobs_of_list(*queue->read_list, *queue->read_count);
  free_blobs_of_list(*queue->fill_list, *queue->fill_count);
}

void __osw_free_blobs_of(__osw_cmd* cmd) {
  u32 mask = cmd->blob_mask;
  cmd->blob_mask = 0;
  for (; mask; mask &= mask - 1) free(reinterpret_cast<void*>(cmd->args[__builtin_ctz(mask)]));
}
