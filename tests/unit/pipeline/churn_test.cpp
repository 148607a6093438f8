// Threads that come, draw and go by the thousand: what the library keeps for them comes back each time.
#include <algorithm>
#include <thread>

#include "support/allocation.h"
#include "support/issuing.h"
#include "wgl/records/glrc.h"

namespace {

using namespace issuing;

#ifdef OSW_THREAD_SANITIZER
constexpr int all_threads = 400;  // the sanitizer keeps memory for each thread that ever was
#else
constexpr int all_threads = 2000;
#endif
constexpr int at_once = 4;
constexpr int batch = 100;

// What threads leave behind, or have in use.
struct remains {
  int memory_blocks = 0;
  int handles = 0;  // and windows, device contexts, keys
  int critical_sections = 0;
  int worker_arguments = 0;
  int thread_states = 0;
  int contexts = 0;
  bool operator==(const remains&) const = default;
};

std::ostream& operator<<(std::ostream& out, const remains& shown) {
  return out << shown.memory_blocks << " blocks, " << shown.handles << " handles, " << shown.critical_sections
             << " critical sections, " << shown.worker_arguments << " worker arguments, " << shown.thread_states
             << " thread states, " << shown.contexts << " contexts";
}

template <class Pointer, std::size_t size>
int used(CRITICAL_SECTION* lock, Pointer (&list)[size]) {
  EnterCriticalSection(lock);
  const auto count = std::count_if(std::begin(list), std::end(list), [](Pointer one) { return one != nullptr; });
  LeaveCriticalSection(lock);
  return static_cast<int>(count);
}

int worker_arguments() {
  return used(&__osw_worker_arg_lock, __osw_worker_arg_list);
}

remains take_stock() {
  remains found;
  found.memory_blocks = allocation::live_blocks();
  found.handles = static_cast<int>(platform::leaks(true).size());
  found.critical_sections = platform::live_critical_sections();
  found.worker_arguments = worker_arguments();
  found.thread_states = used(&__osw_thread_state_lock, __osw_thread_state_list);
  for (const __osw_glrc& record : __osw_glrc_registry) found.contexts += record.app_hglrc != nullptr;
  return found;
}

void draw(const library::app_window& window) {
  osw_glClear(GL_COLOR_BUFFER_BIT);
  osw_glGetError();
  osw_wglSwapBuffers(window.hdc);
  osw_glClear(GL_DEPTH_BUFFER_BIT);
}

// Most threads use a context that somebody else has made, which ends with commands still in the list.
void live_with(const library::rendering& given) {
  ASSERT_TRUE(osw_wglMakeCurrent(given.window.hdc, given.context));
  draw(given.window);
  ASSERT_TRUE(osw_wglMakeCurrent(nullptr, nullptr));
}

// Others have a window and a context of their own, and delete it while it is current.
void live_alone() {
  const library::rendering own = library::start_rendering();
  draw(own.window);
  EXPECT_TRUE(osw_wglDeleteContext(own.context));
}

struct churn_test : pipeline_test, testing::WithParamInterface<library::path> {};
INSTANTIATE_TEST_SUITE_P(, churn_test, testing::Values(library::path::threaded, library::path::sequential));

TEST_P(churn_test, two_thousand_threads_leave_what_one_left) {
  library::start({.way = GetParam(), .query_on_app_thread = false});
  std::vector<library::rendering> given;
  for (int i = 0; i < at_once; ++i) {
    given.push_back(library::start_rendering());
    ASSERT_TRUE(osw_wglMakeCurrent(nullptr, nullptr));
  }
  allocation::watch();
  remains first;
  int most_arguments = 0;
  for (int done = 0; done < all_threads; done += at_once) {
    std::atomic<int> number{0};
    library::run_on_new_threads(at_once, [&] {
      const int mine = number.fetch_add(1);
      if ((done + mine) % 16 == 0) {
        live_alone();
      } else {
        live_with(given[static_cast<std::size_t>(mine)]);
      }
    });
    most_arguments = std::max(most_arguments, worker_arguments());
    if ((done + at_once) % batch) continue;
    // The test's own thread keeps two workers and a swap thread.
    ASSERT_TRUE(platform::wait_for_live_threads(3)) << "workers that do not end";
    driver::clear_calls();
    if (done + at_once == batch) {
      first = take_stock();
      EXPECT_EQ(first.worker_arguments, 3);
      EXPECT_EQ(first.thread_states, 1);
      EXPECT_EQ(first.contexts, at_once);
    }
    ASSERT_EQ(take_stock(), first) << "after " << done + at_once << " threads";
  }
  allocation::stop_watching();
  EXPECT_LT(most_arguments, 100);
  // The last of them are still as good as the first.
  ASSERT_TRUE(osw_wglMakeCurrent(given[0].window.hdc, given[0].context));
  driver::clear_calls();
  osw_glClear(5);
  library::finish();
  for (int part = 0; part < 2; ++part) {
    EXPECT_EQ(library::part_calls(given[0], part), (std::vector{driver::expect<glClear_op>(5u)}));
  }
}

}  // namespace
