#include "pipeline/handshake.h"

void report_done(__osw_cmd_queue* queue, u32 bit) {
  EnterCriticalSection(&queue->done_lock);
  queue->done_mask |= bit;
  WakeConditionVariable(&queue->done_cond);
  LeaveCriticalSection(&queue->done_lock);
}

void report_left(__osw_cmd_queue* queue, u32 bit) {
  EnterCriticalSection(&queue->done_lock);
  queue->done_mask |= bit;
  queue->exit_mask |= bit;
  WakeConditionVariable(&queue->done_cond);
  LeaveCriticalSection(&queue->done_lock);
}

bool wait_for_everyone(__osw_cmd_queue* queue) {
  EnterCriticalSection(&queue->done_lock);
  while (queue->done_mask != queue->all_bits && queue->exit_mask != queue->worker_bits) {
    SleepConditionVariableCS(&queue->done_cond, &queue->done_lock, INFINITE);
  }
  queue->done_mask = 0;
  const bool workers_left = queue->exit_mask == queue->worker_bits;
  LeaveCriticalSection(&queue->done_lock);
  return workers_left;
}

void open_start(__osw_cmd_queue* queue) {
  EnterCriticalSection(&queue->start_lock);
  queue->start_mask = 0;
  WakeAllConditionVariable(&queue->start_cond);
  LeaveCriticalSection(&queue->start_lock);
}

void abandon_workers(__osw_cmd_queue* queue) {
  EnterCriticalSection(&queue->start_lock);
  queue->abandoned = 1;
  queue->start_mask = 0;
  WakeAllConditionVariable(&queue->start_cond);
  LeaveCriticalSection(&queue->start_lock);
}

bool wait_for_start(__osw_cmd_queue* queue, u32 bit) {
  EnterCriticalSection(&queue->start_lock);
  while (queue->start_mask & bit) SleepConditionVariableCS(&queue->start_cond, &queue->start_lock, INFINITE);
  queue->start_mask |= bit;
  const bool goes_on = !queue->abandoned;
  LeaveCriticalSection(&queue->start_lock);
  return goes_on;
}

void close_start(__osw_cmd_queue* queue) {
  EnterCriticalSection(&queue->start_lock);
  queue->start_mask |= queue->app_bit;
  LeaveCriticalSection(&queue->start_lock);
}

void report_replayed(__osw_cmd_queue* queue, u32 bit) {
  EnterCriticalSection(&queue->sync_lock);
  queue->sync_mask |= bit;
  WakeConditionVariable(&queue->sync_cond);
  LeaveCriticalSection(&queue->sync_lock);
}

void wait_for_replay(__osw_cmd_queue* queue) {
  EnterCriticalSection(&queue->sync_lock);
  while (queue->sync_mask != queue->worker_bits) {
    SleepConditionVariableCS(&queue->sync_cond, &queue->sync_lock, INFINITE);
  }
  queue->sync_mask = 0;
  LeaveCriticalSection(&queue->sync_lock);
}

void release_exit_flush(__osw_cmd_queue* queue) {
  EnterCriticalSection(&queue->sync_lock);
  queue->sync_mask = queue->worker_bits;
  WakeConditionVariable(&queue->sync_cond);
  LeaveCriticalSection(&queue->sync_lock);
}
