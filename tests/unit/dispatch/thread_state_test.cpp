// The record of a thread: its making, its place in the list, its end.
#include "dispatch/thread_state.h"

#include "dispatch/system.h"
#include "startup/thread_life.h"
#include "support/allocation.h"
#include "support/library.h"

namespace {

struct thread_state_test : library::process_test {};

__osw_thread_state* own_state() {
  return static_cast<__osw_thread_state*>(TlsGetValue(__osw_state_slot));
}

void expect_fresh(const __osw_thread_state* state, bool bypassed) {
  ASSERT_NE(state, nullptr);
  EXPECT_EQ(state->thread_id, GetCurrentThreadId());
  EXPECT_EQ(state->wgl_bound, 1);
  EXPECT_EQ(state->sys_wgl, __osw_sys_wgl);
  EXPECT_EQ(state->sys_gl, nullptr);
  EXPECT_EQ(state->wgl_table, bypassed ? __osw_wgl_table_pass : __osw_wgl_table_main);
  EXPECT_EQ(state->gl_table, __osw_gl_table_nocontext);
  EXPECT_EQ(state->mode, 0);
  EXPECT_EQ(state->has_context, 0);
  EXPECT_EQ(state->seq_path, 0);
  EXPECT_EQ(state->wrapper_bypassed, bypassed);
  EXPECT_EQ(state->cmd_queue, nullptr);
  EXPECT_EQ(state->thread_ctrl, nullptr);
  EXPECT_EQ(state->frame_count, 0);
}

TEST_F(thread_state_test, the_first_call_makes_one_whatever_it_is) {
  library::start();
  library::run_on_new_thread([] {
    EXPECT_EQ(osw_glGetError(), 0u);
    expect_fresh(own_state(), false);
  });
  library::run_on_new_thread([] {
    EXPECT_EQ(osw_glIsEnabled(GL_BLEND), GL_FALSE);
    expect_fresh(own_state(), false);
  });
  library::run_on_new_thread([] {
    osw_glClear(GL_COLOR_BUFFER_BIT);
    expect_fresh(own_state(), false);
  });
  library::run_on_new_thread([] {
    EXPECT_EQ(osw_wglGetCurrentContext(), nullptr);
    expect_fresh(own_state(), false);
  });
  EXPECT_TRUE(driver::calls_of<glGetError_op>().empty());
}

// The system library's export, which on the way to the first one calls the application's library.
FARPROC export_of_calling_back(const char* name) {
  static bool called;
  if (!std::exchange(called, true)) osw_glFlush();
  return driver::export_of(name);
}

TEST_F(thread_state_test, a_system_library_that_calls_back_while_it_is_bound_leaves_one) {
  most_locks = 2;  // the binding's, and within it that of the list of states
  library::prepare();
  platform::provide_library("opengl32sys.dll", export_of_calling_back);
  platform::attach_process();
  EXPECT_EQ(osw_glGetError(), 0u);
  expect_fresh(own_state(), false);
  std::vector<const __osw_thread_state*> listed;
  for (const __osw_thread_state* state : __osw_thread_state_list) {
    if (state) listed.push_back(state);
  }
  EXPECT_EQ(listed, std::vector<const __osw_thread_state*>{own_state()});
}

TEST_F(thread_state_test, a_bypassed_process_gets_the_pass_through_rows) {
  library::start({.active = false});
  osw_glGetError();
  expect_fresh(own_state(), true);
}

TEST_F(thread_state_test, a_later_call_keeps_it) {
  library::start();
  osw_glGetError();
  const __osw_thread_state* const first = own_state();
  osw_glClear(0);
  osw_wglGetCurrentDC();
  EXPECT_EQ(own_state(), first);
}

TEST_F(thread_state_test, the_debug_entry_makes_one_and_then_returns_it) {
  library::start();
  const u64 first = osw_glDebugEntry();
  ASSERT_NE(own_state(), nullptr);
  EXPECT_EQ(first, static_cast<u64>(TRUE));
  EXPECT_EQ(osw_glDebugEntry(), reinterpret_cast<u64>(own_state()));
}

TEST_F(thread_state_test, making_one_does_not_store_it) {
  library::start();
  __osw_thread_state* state = __osw_get_thread_state();
  expect_fresh(state, false);
  EXPECT_EQ(own_state(), nullptr);
  EXPECT_EQ(__osw_thread_state_list[0], state);
  EXPECT_EQ(__osw_destroy_thread_state(state), 1u);
  EXPECT_EQ(__osw_thread_state_list[0], nullptr);
}

TEST_F(thread_state_test, the_lowest_free_place_of_the_list_is_taken) {
  library::start();
  __osw_thread_state* states[3];
  for (__osw_thread_state*& state : states) state = __osw_get_thread_state();
  for (int i = 0; i < 3; ++i) EXPECT_EQ(__osw_thread_state_list[i], states[i]);
  __osw_destroy_thread_state(states[1]);
  EXPECT_EQ(__osw_thread_state_list[1], nullptr);
  states[1] = __osw_get_thread_state();
  EXPECT_EQ(__osw_thread_state_list[1], states[1]);
  for (__osw_thread_state* state : states) __osw_destroy_thread_state(state);
}

TEST_F(thread_state_test, destroying_none_succeeds) {
  library::start();
  EXPECT_EQ(__osw_destroy_thread_state(nullptr), 1u);
}

TEST_F(thread_state_test, the_sixty_fifth_thread_works_and_is_cleaned_up) {
  library::start();
  std::vector<library::app_thread_pointer> threads;
  for (int i = 0; i < max_thread_states; ++i) {
    threads.push_back(library::start_thread());
    library::run(threads.back(), [] { EXPECT_EQ(osw_glGetError(), 0u); });
  }
  for (const __osw_thread_state* state : __osw_thread_state_list) EXPECT_NE(state, nullptr);
  const library::app_thread_pointer last = library::start_thread();
  allocation::watch();
  library::run(last, [] {
    const library::rendering rendered = library::start_rendering();
    osw_glClear(7);
    library::finish();
    for (int part = 0; part < 2; ++part) {
      EXPECT_EQ(library::part_calls(rendered, part).back(), driver::expect<glClear_op>(7u));
    }
    for (const __osw_thread_state* state : __osw_thread_state_list) EXPECT_NE(state, own_state());
    osw_wglMakeCurrent(nullptr, nullptr);
    osw_wglDeleteContext(rendered.context);
    DestroyWindow(rendered.window.hwnd);
  });
  library::end_thread(last);
  EXPECT_TRUE(platform::wait_for_live_threads(max_thread_states));
  allocation::stop_watching();
  EXPECT_EQ(allocation::live_blocks(), 0);
  for (const __osw_thread_state* state : __osw_thread_state_list) EXPECT_NE(state, nullptr);
  for (const auto& thread : threads) library::end_thread(thread);
  for (const __osw_thread_state* state : __osw_thread_state_list) EXPECT_EQ(state, nullptr);
}

TEST_F(thread_state_test, without_memory_calls_do_nothing_until_there_is_some) {
  library::start();
  library::run_on_new_thread([] {
    allocation::fail_call(1, true);
    EXPECT_EQ(osw_glGetError(), 0u);
    osw_glClear(0);
    EXPECT_EQ(osw_wglGetCurrentContext(), nullptr);
    EXPECT_EQ(own_state(), nullptr);
    allocation::stop_failing();
    EXPECT_EQ(osw_glGetError(), 0u);
    expect_fresh(own_state(), false);
  });
}

TEST_F(thread_state_test, many_threads_make_theirs_at_once) {
  library::start();
  library::run_on_new_threads(8, [] {
    // Each one's binding empties the table that the others call through.
    for (int call = 0; call < 100; ++call) {
      EXPECT_EQ(osw_glGetError(), 0u);
      EXPECT_EQ(osw_wglGetCurrentContext(), nullptr);
    }
    EXPECT_EQ(own_state()->thread_id, GetCurrentThreadId());
  });
  for (const __osw_thread_state* state : __osw_thread_state_list) EXPECT_EQ(state, nullptr);
}

}  // namespace
