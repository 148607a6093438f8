// The hand-over of a filled list to the workers. Everything here runs on the issuing thread, which holds no lock.
#pragma once

#include "pipeline/cmd_queue.h"

// Hands the list over and waits until every worker has replayed it. Follows the append of a synchronous command, which
// is the last of its list. Without parts the list is dropped.
void __osw_flush_sync(__osw_thread_state* state);

// Hands a full list over and waits for the flip, not for the replay.
void __osw_hand_over_full(__osw_thread_state* state);

// Reports the list as filled and goes on: it is handed over as soon as the workers are through with the last one. The
// next append waits for that, so that the thread is never more than one list ahead. Does nothing when the list is
// empty.
void finish_list(__osw_thread_state* state);

// The same, but an append that comes before the list has been handed over goes on in it without a wait: for what may be
// called a thousand times a frame and is seldom the last.
void offer_list(__osw_thread_state* state);

// Makes the list the issuing thread's own again after one of the two.
void take_list(const __osw_thread_state* state);

// The record that the next append fills. Each append begins here.
inline __osw_cmd* begin_cmd(const __osw_thread_state* state) {
  if (state->cmd_queue->report != list_kept) [[unlikely]]
    take_list(state);
  return __osw_next_cmd(state->cmd_queue);
}

// Called after each append of an asynchronous command: hands the list over when it is full.
inline void __osw_flush_full(__osw_thread_state* state) {
  const __osw_cmd_queue* queue = state->cmd_queue;
  if (*queue->fill_count >= queue->list_limit) [[unlikely]]
    __osw_hand_over_full(state);
}
