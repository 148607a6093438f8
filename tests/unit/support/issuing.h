// The pipeline as its issuing thread sees it, and gates that hold a part's worker inside a driver call.
#pragma once

#include "pipeline/flush.h"
#include "pipeline/push.h"
#include "pipeline/threads.h"
#include "support/library.h"

namespace issuing {

// A test whose windows may outlive the process: the system ends them then and tells nobody, so what hangs on them is
// taken off here.
struct pipeline_test : library::process_test {
  void TearDown() override;
};

// Of the calling thread.
__osw_thread_state* state();
__osw_cmd_queue* queue();

// Hands everything over and waits for its replay: the list being filled is empty then, and no worker is in the driver.
void empty_list();

// A window and a context of the calling thread, not yet current.
library::rendering open_rendering();

// Appends `count` asynchronous commands: glHint with rising modes, from `first` on.
void push_hints(u32 count, u32 first = 0);
std::vector<driver::call> hints(u32 count, u32 first = 0);

// The masks of a queue, each read under its lock. Any thread.
struct masks {
  u32 start, done, sync, exit;
};
masks masks_of(__osw_cmd_queue* queue);

// Waits until `reached` holds for the masks. False when it does not in time.
bool wait_for_masks(__osw_cmd_queue* queue, const std::function<bool(const masks&)>& reached);

// Waits until the workers of the calling thread stand at the start, with nothing left to replay.
bool wait_for_idle_workers();

// Holds whoever passes until it is opened. A thread that is killed leaves it too.
struct gate {
  std::mutex lock;
  std::condition_variable changed;
  bool is_open = false;
  int inside = 0;
};
using gate_pointer = std::shared_ptr<gate>;

void pass(gate& held);
void open(gate& held);
bool wait_until_held(gate& held, int threads = 1);

// A gate for the calls of `Op` that the part's worker makes. Set while no worker is in the driver.
template <class Op>
gate_pointer hold_in(HGLRC child) {
  auto held = std::make_shared<gate>();
  driver::on_call<Op>([held, child](driver::live_call& call) {
    if (call.what.context == child) pass(*held);
  });
  return held;
}

// A thread of the application with a current context and an empty list.
struct renderer {
  library::app_thread_pointer thread;
  library::rendering rendered;
  __osw_thread_state* state = nullptr;
  __osw_cmd_queue* queue = nullptr;
  std::vector<DWORD> worker_ids;
};
renderer start_renderer();

// Runs `work` on the renderer's thread, where it ends in a synchronous call of `Op`, which the worker of `last` answers
// when all others have replayed it.
template <class Op>
void run_answered_last(const renderer& asking, int last, const std::function<void()>& work) {
  const gate_pointer gate = hold_in<Op>(asking.rendered.children.at(static_cast<std::size_t>(last)));
  const u32 others = asking.queue->worker_bits & ~(1u << last);
  library::post(asking.thread, work);
  EXPECT_TRUE(wait_until_held(*gate));
  EXPECT_TRUE(wait_for_masks(asking.queue, [others](const masks& now) { return now.sync == others; }));
  open(*gate);
  library::wait(asking.thread);
}

// Releases and deletes the context and closes the window: what a thread has to do to leave nothing behind.
void stop_rendering(const library::rendering& rendered);

}  // namespace issuing
