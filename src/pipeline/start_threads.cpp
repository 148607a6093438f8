#include <cstdlib>

#include "dispatch/process_end.h"
#include "dispatch/report.h"
#include "pipeline/handshake.h"
#include "pipeline/push.h"
#include "pipeline/threads.h"
#include "startup/config/monitors.h"

namespace {

// Starts a thread that may touch the queue until it gives it back. Result: the handle, or null.
HANDLE start_thread(LPTHREAD_START_ROUTINE main, const __osw_thread_ctrl& ctrl, i32 part, DWORD* id) {
  auto* arg = static_cast<__osw_worker_arg*>(calloc(1, sizeof(__osw_worker_arg)));
  if (!arg) return nullptr;
  *arg = {ctrl.app_thread, part, ctrl.state};
  // Here and not by the thread itself, which the end of the process may stop before its first step.
  __osw_register_worker_arg(arg);
  __osw_cmd_queue* queue = ctrl.state->cmd_queue;
  __osw_retain_queue(queue);
  HANDLE thread = CreateThread(nullptr, 0, main, arg, 0, id);
  if (!thread) {
    __osw_release_queue(queue);
    __osw_unregister_worker_arg(arg);
  }
  return thread;
}

bool start_missing(__osw_thread_ctrl* ctrl) {
  for (i32 part = 0; part < __osw_part_count; ++part) {
    HANDLE& worker = ctrl->worker_thread[part];
    if (!worker) worker = start_thread(__osw_worker_main, *ctrl, part, &ctrl->worker_thread_id[part]);
    if (worker) continue;
    show_failure(nullptr, "Creating child thread failed!");
    return false;
  }
  if (!ctrl->swap_thread) ctrl->swap_thread = start_thread(__osw_swap_main, *ctrl, 0, &ctrl->swap_thread_id);
  if (ctrl->swap_thread) return true;
  show_failure(nullptr, "Creating swap thread failed!");
  return false;
}

void close_handles(const __osw_thread_ctrl& ctrl) {
  for (HANDLE worker : ctrl.worker_thread) {
    if (worker) CloseHandle(worker);
  }
  if (ctrl.swap_thread) CloseHandle(ctrl.swap_thread);
}

bool is_running(HANDLE thread) {
  DWORD code = 0;
  return GetExitCodeThread(thread, &code) && code == STILL_ACTIVE;
}

void end_workers(__osw_thread_state* state) {
  const __osw_thread_ctrl& started = state->started;
  if (started.swap_thread) {
    // It has ended when the system has ended all threads, and by itself as soon as it starts when there are no parts.
    if (is_running(started.swap_thread)) __osw_send_exit_cmd(state);
  } else if (started.worker_thread[0] && is_running(started.worker_thread[0])) {
    abandon_workers(state->cmd_queue);
  }
}

}  // namespace

u32 __osw_start_threads(HANDLE app_thread) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  if (TlsGetValue(__osw_ctrl_slot)) return 1;
  state->started.app_thread = app_thread;
  state->started.state = state;
  if (!start_missing(&state->started)) return 0;
  auto* ctrl = static_cast<__osw_thread_ctrl*>(calloc(1, sizeof(__osw_thread_ctrl)));
  if (!ctrl) return 1;
  *ctrl = state->started;
  state->ctrl_block = ctrl;
  TlsSetValue(__osw_ctrl_slot, ctrl);
  return 1;
}

void __osw_end_threads(__osw_thread_state* state) {
  if (!state->cmd_queue) return;
  // At the end of the process nobody is left to take the exit command.
  if (!process_ends) end_workers(state);
  close_handles(state->started);
}
