#include "pipeline/handshake.h"

namespace {

// How often the issuing thread looks whether the others still live.
constexpr DWORD look_interval = 250;  // ms

// Sleeps until `queue` has what `is_there` waits for. Result: false when it will never have it.
template <class Condition>
bool sleep_until(CONDITION_VARIABLE* condition, CRITICAL_SECTION* lock, HANDLE swap_thread, Condition is_there) {
  while (!is_there()) {
    if (SleepConditionVariableCS(condition, lock, look_interval)) continue;
    // It may have ended because it had done all it should.
    if (WaitForSingleObject(swap_thread, 0) == WAIT_OBJECT_0 && !is_there()) return false;
  }
  return true;
}

}  // namespace

void report_done(__osw_cmd_queue* queue, u32 bit) {
  EnterCriticalSection(&queue->done_lock);
  queue->done_mask |= bit;
  WakeConditionVariable(&queue->done_cond);
  LeaveCriticalSection(&queue->done_lock);
}

bool take_report_back(__osw_cmd_queue* queue, u32 bit) {
  EnterCriticalSection(&queue->done_lock);
  const bool is_there = queue->done_mask & bit;
  queue->done_mask &= ~bit;
  LeaveCriticalSection(&queue->done_lock);
  return is_there;
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

bool wait_for_flip(__osw_cmd_queue* queue, HANDLE swap_thread) {
  EnterCriticalSection(&queue->start_lock);
  const bool flipped = sleep_until(&queue->start_cond, &queue->start_lock, swap_thread,
                                   [=] { return !(queue->start_mask & queue->app_bit); });
  queue->start_mask |= queue->app_bit;
  LeaveCriticalSection(&queue->start_lock);
  return flipped;
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

bool wait_for_replay(__osw_cmd_queue* queue, HANDLE swap_thread) {
  EnterCriticalSection(&queue->sync_lock);
  const bool replayed = sleep_until(&queue->sync_cond, &queue->sync_lock, swap_thread,
                                    [=] { return queue->sync_mask == queue->worker_bits; });
  queue->sync_mask = 0;
  LeaveCriticalSection(&queue->sync_lock);
  return replayed;
}

void release_exit_flush(__osw_cmd_queue* queue) {
  EnterCriticalSection(&queue->sync_lock);
  queue->sync_mask = queue->worker_bits;
  WakeConditionVariable(&queue->sync_cond);
  LeaveCriticalSection(&queue->sync_lock);
}
