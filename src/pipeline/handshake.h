// The hand-over of the lists: what the issuing thread, the workers and the swap thread of a queue say to each other.
//
//     issuing thread             swap thread              workers
//     fill a list                                         replay the other
//                                                         report_replayed      if its last command was synchronous
//     report_done          ──>   wait_for_everyone  <──   report_done
//                                flip: exchange the lists
//     wait_for_flip        <──   open_start         ──>   wait_for_start
//
// After a synchronous command the issuing thread waits for the replay and not for the start:
//
//     wait_for_replay      <──                            report_replayed
//     close_start
//
// A thread that shows what it has drawn and does not wait reports, and comes for the flip when it has more to say. If
// it has only offered the list, and the flip has not come, it goes on with the same list:
//
//     report_done          ──>
//     take_report_back
//
// A worker that has taken the exit command says report_left. When all have, wait_for_everyone tells the swap thread,
// which leaves with release_exit_flush.
//
// Nothing else touches the masks of a queue that has its threads. Each function takes the lock of the mask's name, that
// of `exit_mask` being `done_lock`, and is called with no lock held. `bit` is the caller's own: `app_bit`, or bit i for
// the worker of part i.
#pragma once

#include "pipeline/cmd_queue.h"

// Issuing thread or worker: it is through with its list.
void report_done(__osw_cmd_queue* queue, u32 bit);

// Issuing thread, after `report_done`: takes the report back. Result: false when it is too late, because everyone was
// through with their lists; the flip comes then, and must be waited for.
bool take_report_back(__osw_cmd_queue* queue, u32 bit);

// Worker, after `report_done`: waits for the flip, and closes the start behind itself. Result: whether there is a list
// to go on with; false when its queue was abandoned.
bool wait_for_start(__osw_cmd_queue* queue, u32 bit);

// The same for the issuing thread. Result: false when there will be no flip any more, because the swap thread has
// ended: the end of the process stops it before other libraries have made their last calls.
bool wait_for_flip(__osw_cmd_queue* queue, HANDLE swap_thread);

// Worker, before `report_done`: it has replayed a list whose last command the issuing thread waits for.
void report_replayed(__osw_cmd_queue* queue, u32 bit);

// Worker, in place of `report_done`: it has taken the exit command, and touches no list any more.
void report_left(__osw_cmd_queue* queue, u32 bit);

// Issuing thread, after `report_done`: waits until every worker has replayed the list. Result: as of `wait_for_flip`.
bool wait_for_replay(__osw_cmd_queue* queue, HANDLE swap_thread);

// Issuing thread, after `wait_for_replay`, by which it has passed a start without waiting for it: closes that one.
void close_start(__osw_cmd_queue* queue);

// Swap thread: waits until everyone is through with their list. Result: true when the workers have left instead.
bool wait_for_everyone(__osw_cmd_queue* queue);

// Swap thread, after the flip: lets everyone go on.
void open_start(__osw_cmd_queue* queue);

// Swap thread, once the workers have left: releases the flush that waits for the exit command, which is nobody's
// synchronous command.
void release_exit_flush(__osw_cmd_queue* queue);

// Thread that ends the pipeline, when no swap thread ever came. There was no flip then: the workers stand at the
// start, or are on their way there, and end when it opens.
void abandon_workers(__osw_cmd_queue* queue);
