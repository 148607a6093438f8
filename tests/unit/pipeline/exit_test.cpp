// The end of the process while threads of the application and their workers are anywhere in the pipeline. The platform
// stops them where they are, and the thread that ends the process cleans up alone.
#include <algorithm>

#include "platform/faults.h"
#include "startup/config/monitors.h"
#include "support/allocation.h"
#include "support/issuing.h"

namespace {

using namespace issuing;

// How the end finds a thread of the application.
struct exit_state {
  const char* name;
  void (*act)();
  bool waits;  // its workers are held in a driver call, and it may be held by them
};

void hold_workers() {
  const u64 slots[] = {GL_POINTS};
  __osw_push_gl_cmd(state(), glBegin_op::op, 1, slots, 0);
}

void replay() {
  hold_workers();
  push_hints(5500);
}

void wait_for_replay() {
  hold_workers();
  empty_list();
}

void wait_for_flip() {
  hold_workers();
  push_hints(4999 + 5000);
}

void release() {
  osw_wglMakeCurrent(nullptr, nullptr);
}

void report_list() {
  push_hints(10);
  finish_list(state());
}

const exit_state replaying = {"replaying", replay, true};
const exit_state exit_states[] = {{"idle", [] {}, false},
                                  {"filling", [] { push_hints(100); }, false},
                                  replaying,
                                  {"waiting_for_replay", wait_for_replay, true},
                                  {"waiting_for_the_flip", wait_for_flip, true},
                                  {"released", release, false},
                                  {"list_reported", report_list, false}};

struct exit_test : pipeline_test, testing::WithParamInterface<int> {};
using process_exit_test = pipeline_test;

const exit_state& state_of_test() {
  return exit_states[exit_test::GetParam()];
}

// Memory of pipelines, which must be gone in the end.
struct blocks {
  std::vector<std::uintptr_t> all;
};

// Adds the calling thread's.
void add(blocks& found) {
  for (const void* block :
       {static_cast<const void*>(state()), static_cast<const void*>(queue()), static_cast<const void*>(queue()->list_a),
        static_cast<const void*>(queue()->list_b), static_cast<const void*>(TlsGetValue(__osw_ctrl_slot))}) {
    if (!block) continue;  // of threads half started
    found.all.push_back(reinterpret_cast<std::uintptr_t>(block));
    EXPECT_TRUE(allocation::is_live(found.all.back()));
  }
}

// Brings the calling thread there. Its workers have run by then.
void enter_state(const exit_state& way, blocks& found) {
  const library::rendering drawn = library::start_rendering();
  empty_list();
  DestroyWindow(drawn.window.hwnd);
  add(found);
  way.act();
}

gate_pointer hold_everybody() {
  auto held = std::make_shared<gate>();
  driver::on_call<glBegin_op>([held](driver::live_call&) { pass(*held); });
  return held;
}

void expect_freed(const blocks& found) {
  const std::vector<std::uintptr_t> freed = allocation::freed();
  for (const std::uintptr_t block : found.all) {
    EXPECT_FALSE(allocation::is_live(block));
    EXPECT_EQ(std::ranges::count(freed, block), 1);
  }
  allocation::stop_watching();
}

void exit_and_check(const blocks& found, DWORD exit_code = 1) {
  EXPECT_TRUE(platform::exit_process(exit_code));
  EXPECT_EQ(platform::live_threads(), 0);
  for (const __osw_thread_state* listed : __osw_thread_state_list) EXPECT_EQ(listed, nullptr);
  for (const __osw_worker_arg* listed : __osw_worker_arg_list) EXPECT_EQ(listed, nullptr);
  expect_freed(found);
}

// A thread of the application in the state of the test.
library::app_thread_pointer start_in_state(blocks& found, const gate_pointer& gate, int held_already) {
  const library::app_thread_pointer thread = library::start_thread();
  library::post(thread, [&found] { enter_state(state_of_test(), found); });
  if (state_of_test().waits) {
    EXPECT_TRUE(wait_until_held(*gate, held_already + __osw_part_count));
  } else {
    library::wait(thread);
  }
  return thread;
}

TEST_P(exit_test, other_threads_are_cleaned_up) {
  library::start({.parts = 4, .query_on_app_thread = false});
  const gate_pointer gate = hold_everybody();
  blocks found;
  allocation::watch();
  start_in_state(found, gate, 0);
  exit_and_check(found);
}

// Two threads in the state of the test, one of which ends the process.
void end_on_one_of_two(DWORD exit_code) {
  library::start({.parts = 2, .query_on_app_thread = false});
  const gate_pointer gate = hold_everybody();
  blocks found;
  allocation::watch();
  enter_state(state_of_test().waits ? replaying : state_of_test(), found);
  const int held = state_of_test().waits ? 2 : 0;
  ASSERT_TRUE(wait_until_held(*gate, held));
  start_in_state(found, gate, held);
  exit_and_check(found, exit_code);
}

// Its own workers are stopped by the platform too: it has nobody to wait for.
TEST_P(exit_test, the_thread_that_ends_the_process_has_a_pipeline_too) {
  end_on_one_of_two(1);
}

// Exactly the code that says that a thread still runs.
TEST_P(exit_test, an_exit_code_that_looks_alive_sends_no_exit_command) {
  end_on_one_of_two(STILL_ACTIVE);
}

INSTANTIATE_TEST_SUITE_P(states, exit_test, testing::Range(0, static_cast<int>(std::size(exit_states))),
                         [](const auto& named) { return std::string(exit_states[named.param].name); });

TEST_F(process_exit_test, with_a_dead_swap_thread_no_exit_command_is_sent) {
  library::start();
  library::start_rendering();
  empty_list();
  driver::clear_calls();
  push_hints(10);
  ASSERT_TRUE(platform::kill_other_threads());
  allocation::watch();
  EXPECT_TRUE(platform::exit_process());
  EXPECT_TRUE(driver::calls_of<glHint_op>().empty());
  EXPECT_FALSE(allocation::freed().empty());
  EXPECT_EQ(TlsGetValue(__osw_ctrl_slot), nullptr);
}

// Libraries that are told of the end before this one may have destructors that draw.
struct late_call {
  const char* name;
  void (*act)();
};

const late_call late_calls[] = {{"a_synchronous_op", [] { osw_glGetError(); }},
                                {"a_release", [] { osw_wglMakeCurrent(nullptr, nullptr); }},
                                {"a_full_list", [] { push_hints(3 * 5000); }},
                                {"a_swap_and_a_finish", [] {
                                   osw_wglSwapBuffers(osw_wglGetCurrentDC());
                                   osw_glFinish();
                                 }}};

struct late_call_test : pipeline_test, testing::WithParamInterface<late_call> {};

TEST_P(late_call_test, returns_when_the_workers_have_been_killed) {
  library::start({.parts = 4, .query_on_app_thread = false});
  blocks found;
  allocation::watch();
  enter_state(exit_states[1], found);
  ASSERT_TRUE(platform::kill_other_threads(STILL_ACTIVE));
  for (int i = 0; i < 3; ++i) GetParam().act();
  exit_and_check(found);
}

INSTANTIATE_TEST_SUITE_P(calls, late_call_test, testing::ValuesIn(late_calls),
                         [](const auto& named) { return std::string(named.param.name); });

// Windows with its procedures and its threads outlive the program's interest in it.
TEST_F(process_exit_test, a_library_that_has_bound_a_context_stays_loaded) {
  library::start({.parts = 4});
  const library::rendering drawn = library::start_rendering();
  empty_list();
  driver::clear_calls();
  push_hints(10);
  EXPECT_TRUE(platform::detach_process());
  EXPECT_TRUE(platform::process_attached());
  EXPECT_EQ(platform::live_threads(), 5);
  empty_list();
  for (int part = 0; part < 4; ++part) EXPECT_EQ(library::part_calls(drawn, part), hints(10));
  EXPECT_EQ(platform::call_count("GetModuleHandleExA"), 1);
}

TEST_F(process_exit_test, a_bypassed_library_is_unloaded) {
  library::start({.active = false});
  library::start_rendering();
  EXPECT_TRUE(platform::detach_process());
  EXPECT_FALSE(platform::process_attached());
}

TEST_F(process_exit_test, half_started_threads_are_cleaned_up) {
  expects_message_boxes = true;
  library::start({.parts = 4});
  blocks found;
  allocation::watch();
  for (int call = 1; call <= 5; ++call) {
    library::run(library::start_thread(), [call, &found] {
      platform::fail_call("CreateThread", call);
      const library::rendering drawn = library::start_rendering();
      DestroyWindow(drawn.window.hwnd);
      add(found);
      const u32 begun = (1u << (call - 1)) - 1;
      ASSERT_TRUE(wait_for_masks(queue(), [begun](const masks& now) { return now.done == begun; }));
    });
  }
  exit_and_check(found);
}

}  // namespace
