#include "pipeline/threads.h"

namespace {

// Waits until everyone has finished with their list. Result: whether the workers have left.
bool wait_for_everyone(__osw_cmd_queue* queue, u32 worker_bits, u32 all_bits) {
  EnterCriticalSection(&queue->done_lock);
  while (queue->done_mask != all_bits && queue->exit_mask != worker_bits) {
    SleepConditionVariableCS(&queue->done_cond, &queue->done_lock, INFINITE);
  }
  queue->done_mask = 0;
  const bool workers_left = queue->exit_mask == worker_bits;
  LeaveCriticalSection(&queue->done_lock);
  return workers_left;
}

// Exchanges the lists. Nobody else touches them now: the workers and the issuing thread are all held at their masks.
void flip(__osw_cmd_queue* queue) {
  if (queue->read_list != &queue->list_a) {
    queue->read_list = &queue->list_a;
    queue->read_count = &queue->count_a;
    queue->fill_list = &queue->list_b;
    queue->fill_count = &queue->count_b;
  } else {
    queue->fill_list = &queue->list_a;
    queue->fill_count = &queue->count_a;
    queue->read_list = &queue->list_b;
    queue->read_count = &queue->count_b;
  }
  *queue->fill_count = 0;
}

void open_start(__osw_cmd_queue* queue) {
  EnterCriticalSection(&queue->start_lock);
  queue->start_mask = 0;
  WakeAllConditionVariable(&queue->start_cond);
  LeaveCriticalSection(&queue->start_lock);
}

// The exit command is nobody's synchronous command, so the flush that waits for it is released here.
void release_exit_flush(__osw_cmd_queue* queue, u32 worker_bits) {
  EnterCriticalSection(&queue->sync_lock);
  queue->sync_mask = worker_bits;
  WakeConditionVariable(&queue->sync_cond);
  LeaveCriticalSection(&queue->sync_lock);
}

}  // namespace

DWORD WINAPI __osw_swap_main(void* start) {
  auto* arg = static_cast<__osw_worker_arg*>(start);
  __osw_cmd_queue* queue = arg->state->cmd_queue;
  const u32 worker_bits = queue->worker_bits;
  const u32 all_bits = queue->all_bits;
  while (!wait_for_everyone(queue, worker_bits, all_bits)) {
    flip(queue);
    open_start(queue);
  }
  release_exit_flush(queue, worker_bits);
  __osw_unregister_worker_arg(arg);
  __osw_release_queue(queue);
  __osw_note_thread_left();
  return 0;
}
