// The queue of one issuing thread: two lists of commands, of which the thread fills one while the workers of its parts
// replay the other, and the masks by which the lists are handed over.
#pragma once

#include "dispatch/thread_state.h"
#include "pipeline/cmd.h"

constexpr u32 cmd_list_limit = 5000;    // the count at which a list is full
constexpr u32 cmd_list_margin = 100;    // records beyond the limit, which nothing uses
constexpr u32 app_mask_bit = 1u << 31;  // the issuing thread's bit in `start_mask` and `done_mask`

// What the issuing thread has reported of the list that it fills, without waiting for the flip. The later holds more.
enum list_report : u32 {
  list_kept,      // nothing: the list is its own
  list_offered,   // the list may be flipped; until it is, the report can be taken back
  list_finished,  // the list is flipped as it is
};

// Who may touch what: the masks only under the lock of the same name; the records and count of the list being filled,
// `last_sync_flag`, `report` and the counters only the issuing thread; the list being read only the workers; the four
// list pointers only the swap thread, while everyone else waits at a mask. `last_result` is stored by every worker,
// relaxed.
struct __osw_cmd_queue {
  CONDITION_VARIABLE start_cond;  // workers and issuing thread: the flip
  CONDITION_VARIABLE done_cond;   // swap thread: everyone has finished
  CONDITION_VARIABLE sync_cond;   // issuing thread: the replay of a synchronous list
  CRITICAL_SECTION start_lock;
  CRITICAL_SECTION done_lock;  // also `exit_mask`
  CRITICAL_SECTION sync_lock;
  u32 start_mask;  // a set bit holds its owner back until the next flip
  u32 done_mask;   // a set bit: its owner has finished with its list
  u32 sync_mask;   // a set bit: that worker has replayed a list that ended in a synchronous command
  u32 exit_mask;   // a set bit: that worker has taken the exit command
  u32 app_bit;
  u32 worker_bits;  // bit i for part i; 0 without parts
  u32 all_bits;
  u32 last_sync_flag;
  const u32* wgl_sync_flags;
  const u32* gl_sync_flags;
  const char* const* wgl_op_names;
  const char* const* gl_op_names;
  u32 wgl_sync_count[wgl_op_count];
  u32 gl_sync_count[gl_op_count];
  u32 send_sync_count;
  u32 full_count;
  __osw_cmd* list_a;
  u32 count_a;
  __osw_cmd* list_b;
  u32 count_b;
  u32 list_limit;
  __osw_cmd** read_list;
  u32* read_count;
  __osw_cmd** fill_list;
  u32* fill_count;
  u64 last_result;            // of the latest replay on any worker; relaxed
  u32 abandoned;              // 1: no swap thread could be made, so that workers end at the start; under `start_lock`
  u32 users;                  // threads that may still touch the queue, its issuing thread included; atomic
  u32 report;                 // a `list_report`; the list is touched only while it is `list_kept`
  __osw_thread_state* owner;  // set when the state has been destroyed: freed together with the queue
  u32 wide_sync_count[gl_all_count - gl_op_count];  // as gl_sync_count, of the ops behind them
};

// Makes the calling thread's queue, unless it has one. Result: 1, or 0 without memory; nothing is kept then.
u32 __osw_create_cmd_queue(__osw_thread_state* state);

// Takes and gives back the right to touch the queue. Whoever gives it back last deletes the locks and frees the blobs
// of both lists, the lists, the queue and, once its thread has destroyed it, the state. A counter does this, and no
// wait for a thread's end, because a detaching thread holds the loader lock, which an ending thread needs.
void __osw_retain_queue(__osw_cmd_queue* queue);
void __osw_release_queue(__osw_cmd_queue* queue);

// Releases what commands of both lists still hold: each block once. No worker may be replaying.
void __osw_free_cmd_blobs(__osw_cmd_queue* queue);

// Frees every block that the record's mask names, and clears the mask before.
void __osw_free_blobs_of(__osw_cmd* cmd);

// The record that the next append will use. Only the issuing thread; valid until that append's list has been replayed.
inline __osw_cmd* __osw_next_cmd(const __osw_cmd_queue* queue) {
  return *queue->fill_list + *queue->fill_count;
}
