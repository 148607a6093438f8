// The hand-over of a filled list to the workers. Everything here runs on the issuing thread, which holds no lock.
#pragma once

#include "pipeline/cmd_queue.h"

// Hands the list over and waits until every worker has replayed it. Follows the append of a synchronous command, which
// is the last of its list. Without parts the list is dropped.
void __osw_flush_sync(__osw_thread_state* state);

// Hands a full list over and waits for the flip, not for the replay.
void __osw_hand_over_full(__osw_thread_state* state);

// Hands the list over as a full one, and counts nothing; does nothing when it is empty.
void __osw_hand_over_idle(__osw_thread_state* state);

// Called after each append of an asynchronous command: hands the list over when it is full.
inline void __osw_flush_full(__osw_thread_state* state) {
  const __osw_cmd_queue* queue = state->cmd_queue;
  if (*queue->fill_count >= queue->list_limit) [[unlikely]]
    __osw_hand_over_full(state);
}
