#include <cstdlib>

#include "pipeline/threads.h"

__osw_worker_arg* __osw_worker_arg_list[max_worker_args];
CRITICAL_SECTION __osw_worker_arg_lock;

namespace {

// Replaces the first slot that holds `present`. Result: whether there was one.
bool replace_arg(const __osw_worker_arg* present, __osw_worker_arg* wanted) {
  bool found = false;
  EnterCriticalSection(&__osw_worker_arg_lock);
  for (__osw_worker_arg*& slot : __osw_worker_arg_list) {
    if (slot != present) continue;
    slot = wanted;
    found = true;
    break;
  }
  LeaveCriticalSection(&__osw_worker_arg_lock);
  return found;
}

}  // namespace

void __osw_register_worker_arg(__osw_worker_arg* arg) {
  replace_arg(nullptr, arg);
}

void __osw_unregister_worker_arg(__osw_worker_arg* arg) {
  if (replace_arg(arg, nullptr)) free(arg);
}

void __osw_release_for_ended_threads() {
  for (__osw_worker_arg*& slot : __osw_worker_arg_list) {
    __osw_worker_arg* arg = slot;
    if (!arg) continue;
    slot = nullptr;
    __osw_release_queue(arg->state->cmd_queue);
    free(arg);
  }
}
