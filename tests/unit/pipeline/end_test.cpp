// The end of a thread and of the process, whatever the pipeline is doing then: nobody hangs, nothing is lost, nothing
// is left, nothing is used after it has gone.
#include <map>
#include <thread>

#include "pipeline/cmd_queue.h"
#include "support/allocation.h"
#include "support/issuing.h"

namespace {

using namespace issuing;

// What a thread has done when it ends. Its window is gone by then, with which the memory of the binding goes.
struct thread_end {
  const char* name;
  std::function<void(const library::rendering&)> before;  // with the window
  std::function<void()> after;                            // without it; pushes hints 0 to `hints` - 1
  u32 hints;
};

void release_context() {
  osw_wglMakeCurrent(nullptr, nullptr);
}

void bind_another(const library::rendering& first) {
  const HGLRC second = osw_wglCreateContext(first.window.hdc);
  EXPECT_TRUE(osw_wglMakeCurrent(first.window.hdc, second));
  EXPECT_TRUE(osw_wglMakeCurrent(first.window.hdc, first.context));
}

const std::vector<thread_end>& thread_ends() {
  static const std::vector<thread_end> all = {
      {"nothing pending", nullptr, nullptr, 0},
      {"one command pending", nullptr, [] { push_hints(1); }, 1},
      {"a list but for one command", nullptr, [] { push_hints(4998); }, 4998},
      {"the exit command as the last that fits", nullptr, [] { push_hints(4999); }, 4999},
      {"a list just handed over", nullptr, [] { push_hints(5000); }, 5000},
      {"both lists in use", nullptr, [] { push_hints(9000); }, 9000},
      {"after a synchronous command", nullptr,
       [] {
         push_hints(3);
         __osw_push_gl_cmd(state(), glGetError_op::op, 0, nullptr, 0);
       },
       3},
      {"a list that it has finished", nullptr,
       [] {
         push_hints(2);
         finish_list(state());
       },
       2},
      {"a list that it has offered", nullptr,
       [] {
         push_hints(2);
         offer_list(state());
       },
       2},
      {"another context used in between", bind_another, [] { push_hints(5); }, 5},
      {"context released",
       [](const library::rendering&) {
         push_hints(4);
         release_context();
       },
       nullptr, 4},
      {"commands after a release", [](const library::rendering&) { release_context(); },
       [] { __osw_send_sync_cmd(state()); }, 0},
      {"context deleted",
       [](const library::rendering& drawn) {
         push_hints(6);
         osw_wglDeleteContext(drawn.context);
       },
       nullptr, 6},
  };
  return all;
}

// What each context has got, in one look at what may be a hundred thousand calls. Only hints count: bindings and
// geometry are other tests' matter.
std::map<HGLRC, std::vector<driver::call>> hints_by_context() {
  std::map<HGLRC, std::vector<driver::call>> found;
  for (const driver::call& one : driver::calls()) {
    if (one.space == driver::op_space::gl && one.op == glHint_op::op) found[one.context].push_back(one);
  }
  return found;
}

struct end_test : pipeline_test {};
struct end_part_test : pipeline_test, testing::WithParamInterface<int> {};

void end_thread_in(const thread_end& way) {
  const library::app_thread_pointer thread = library::start_thread();
  library::rendering drawn;
  allocation::watch();
  library::run(thread, [&] {
    drawn = library::start_rendering();
    if (way.before) way.before(drawn);
    DestroyWindow(drawn.window.hwnd);
    if (way.after) way.after();
  });
  library::end_thread(thread);
  ASSERT_TRUE(platform::wait_for_live_threads(0)) << "workers that do not end";
  allocation::stop_watching();
  EXPECT_EQ(allocation::live_blocks(), 0);
  std::map<HGLRC, std::vector<driver::call>> found = hints_by_context();
  for (const HGLRC child : drawn.children) EXPECT_EQ(found[child], hints(way.hints));
  EXPECT_EQ(platform::leaks(true), std::vector<std::string>());
  driver::clear_calls();
}

TEST_P(end_part_test, a_thread_ends_in_every_state) {
  library::start({.parts = GetParam(), .query_on_app_thread = false});
  for (const thread_end& way : thread_ends()) {
    SCOPED_TRACE(way.name);
    end_thread_in(way);
  }
}

TEST_P(end_part_test, a_thread_ends_while_its_workers_are_busy) {
  library::start({.parts = GetParam(), .query_on_app_thread = false});
  std::atomic<u32> calls{0};
  driver::on_call<glHint_op>([&calls](driver::live_call&) {
    if (calls.fetch_add(1, std::memory_order_relaxed) % 97 == 0) {
      std::this_thread::sleep_for(std::chrono::microseconds(200));
    }
  });
  for (const thread_end& way : thread_ends()) {
    SCOPED_TRACE(way.name);
    end_thread_in(way);
  }
}

INSTANTIATE_TEST_SUITE_P(parts, end_part_test, testing::Values(1, 2, 4, 16));

TEST_F(end_test, a_thread_that_never_drew_ends_without_a_flush) {
  library::start();
  allocation::watch();
  library::run_on_new_thread([] {});
  library::run_on_new_thread([] { osw_glClear(0); });
  library::run_on_new_thread([] {
    const library::app_window window = library::open_window();
    EXPECT_NE(osw_wglCreateContext(window.hdc), nullptr);
    DestroyWindow(window.hwnd);
  });
  EXPECT_EQ(allocation::live_blocks(), 0);
  EXPECT_EQ(platform::call_count("CreateThread"), 0);
  EXPECT_EQ(platform::call_count("GetExitCodeThread"), 0);
}

TEST_F(end_test, a_thread_on_the_sequential_path_ends_its_workers) {
  library::start({.parts = 4, .way = library::path::sequential});
  allocation::watch();
  library::run_on_new_thread([] {
    const library::rendering drawn = library::start_rendering();
    EXPECT_EQ(platform::live_threads(), 6);
    osw_glHint(GL_FOG_HINT, 0);
    DestroyWindow(drawn.window.hwnd);
  });
  ASSERT_TRUE(platform::wait_for_live_threads(0));
  allocation::stop_watching();
  EXPECT_EQ(allocation::live_blocks(), 0);
}

TEST_F(end_test, a_bypassed_thread_has_no_pipeline_to_end) {
  library::start({.active = false});
  library::run_on_new_thread([] {
    const library::rendering drawn = library::start_rendering();
    EXPECT_EQ(state()->cmd_queue, nullptr);
    osw_glHint(GL_FOG_HINT, 0);
    DestroyWindow(drawn.window.hwnd);
  });
  EXPECT_EQ(platform::call_count("CreateThread"), 0);
}

TEST_F(end_test, threads_come_and_go_at_once) {
  library::start({.parts = 4, .query_on_app_thread = false});
  std::vector<HANDLE> threads;
  allocation::watch();
  for (u32 number = 0; number < 4; ++number) {
    threads.push_back(platform::start_thread([number] {
      for (u32 round = 0; round < 15; ++round) {
        library::run_on_new_thread([number, round] {
          const library::rendering drawn = open_rendering();
          EXPECT_TRUE(osw_wglMakeCurrent(drawn.window.hdc, drawn.context));
          push_hints(round % 7 * 700 + number);
          stop_rendering(drawn);
        });
      }
    }));
  }
  for (const HANDLE thread : threads) EXPECT_TRUE(platform::join(thread));
  ASSERT_TRUE(platform::wait_for_live_threads(0));
  allocation::stop_watching();
  EXPECT_EQ(allocation::live_blocks(), 0);
  EXPECT_EQ(platform::leaks(true), std::vector<std::string>());
}

TEST_F(end_test, a_queue_outlives_everyone_who_may_touch_it) {
  library::start();
  const library::app_thread_pointer thread = library::start_thread();
  __osw_cmd_queue* kept = nullptr;
  std::vector<std::uintptr_t> blocks;
  allocation::watch();
  library::run(thread, [&] {
    const library::rendering drawn = library::start_rendering();
    DestroyWindow(drawn.window.hwnd);
    kept = queue();
    blocks = {reinterpret_cast<std::uintptr_t>(kept), reinterpret_cast<std::uintptr_t>(state()),
              reinterpret_cast<std::uintptr_t>(kept->list_a), reinterpret_cast<std::uintptr_t>(kept->list_b)};
    // In the place of a worker that takes its time over its last step.
    __osw_retain_queue(kept);
  });
  const int locks = platform::live_critical_sections();
  library::end_thread(thread);
  ASSERT_TRUE(platform::wait_for_live_threads(0));
  for (const std::uintptr_t block : blocks) EXPECT_TRUE(allocation::is_live(block));
  EXPECT_EQ(platform::live_critical_sections(), locks);
  EXPECT_EQ(masks_of(kept).exit, 3u);
  __osw_release_queue(kept);
  for (const std::uintptr_t block : blocks) EXPECT_FALSE(allocation::is_live(block));
  EXPECT_EQ(platform::live_critical_sections(), locks - 3);
  allocation::stop_watching();
  EXPECT_EQ(allocation::live_blocks(), 0);
}

}  // namespace
