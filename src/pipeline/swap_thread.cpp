#include "pipeline/handshake.h"
#include "pipeline/threads.h"

namespace {

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

}  // namespace

DWORD WINAPI __osw_swap_main(void* start) {
  auto* arg = static_cast<__osw_worker_arg*>(start);
  __osw_cmd_queue* queue = arg->state->cmd_queue;
  while (!wait_for_everyone(queue)) {
    flip(queue);
    open_start(queue);
  }
  release_exit_flush(queue);
  __osw_unregister_worker_arg(arg);
  __osw_release_queue(queue);
  return 0;
}
