// Carries out one command on the child context of one part. Called by that part's worker, in list order, with no queue
// lock held; `state` and `queue` are the issuing thread's.
#pragma once

#include "pipeline/cmd_queue.h"

// Fill the tables of what the two below do for each op. Process attach, before there is a thread.
void fill_gl_cases();
void fill_wgl_cases();

// A command of type 2. The op's return value goes into the record and into the queue's `last_result`, and the last
// worker through a command frees its blobs. An op out of range makes no call. Failures of GL stay in the child context.
void __osw_replay_gl(__osw_thread_state* state, __osw_cmd_queue* queue, const __osw_proc* sys_gl, i32 part,
                     __osw_cmd* cmd);

// A command of type 1, whose handles are replaced by the part's own. An op without a case does nothing. Results of the
// system are ignored.
void __osw_replay_wgl(__osw_thread_state* state, __osw_cmd_queue* queue, const __osw_proc* sys_wgl, i32 part,
                      __osw_cmd* cmd);
