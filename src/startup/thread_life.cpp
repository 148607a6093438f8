#include "startup/thread_life.h"

#include <cstdlib>

#include "pipeline/statistics.h"
#include "pipeline/threads.h"
#include "sequential/staged_blocks.h"
#include "wgl/records/window_mapping.h"

u32 __osw_destroy_thread_state(__osw_thread_state* state) {
  if (!state) return 1;
  __osw_unlist_thread_state(state);
  __osw_print_sync_info(state);
  __osw_drop_window_mapping(state->window_mapping);
  free_staged_blocks(state);
  free(state->ctrl_block);
  __osw_cmd_queue* queue = state->cmd_queue;
  if (!queue) {
    free(state);
    return 1;
  }
  queue->owner = state;
  __osw_release_queue(queue);
  return 1;
}

void __osw_end_thread_state(__osw_thread_state* state) {
  __osw_end_threads(state);
  __osw_destroy_thread_state(state);
}

void __osw_detach_thread() {
  auto* state = static_cast<__osw_thread_state*>(TlsGetValue(__osw_state_slot));
  if (state == shared_thread_state()) return;
  const bool called = state != nullptr;
  if (!called) state = make_ending_thread_state();
  if (!state) return;
  __osw_end_thread_state(state);
  if (called) TlsSetValue(__osw_state_slot, shared_thread_state());
  TlsSetValue(__osw_ctrl_slot, nullptr);
}
