// The stand-in for <windows.h>: what is left of threads that the end of the process has stopped, and what the program
// does at the end of its own.
#include <thread>

#include "support/platform_test.h"

using namespace std::chrono_literals;

namespace {

struct end_test : platform_test {};
using end_death_test = end_test;

// Goes on until it is stopped, after `work`.
HANDLE start_endless_thread(const std::function<void()>& work = [] {}) {
  std::atomic<bool> runs{false};
  const HANDLE thread = platform::start_thread([&runs, work] {
    work();
    runs = true;
    for (;;) {
      platform::kill_point();
      std::this_thread::sleep_for(1ms);
    }
  });
  while (!runs) std::this_thread::sleep_for(1ms);
  return thread;
}

DWORD exit_code_of(HANDLE thread) {
  DWORD code = 0;
  EXPECT_TRUE(GetExitCodeThread(thread, &code));
  return code;
}

struct exit_code_test : end_test, testing::WithParamInterface<DWORD> {};

// STILL_ACTIVE as well, by which a thread that was stopped looks like one that runs.
TEST_P(exit_code_test, a_stopped_thread_has_that_of_the_process) {
  const HANDLE ended = CreateThread(
      nullptr, 0, [](LPVOID) -> DWORD { return 42; }, nullptr, 0, nullptr);
  EXPECT_TRUE(platform::wait_for_live_threads(0));
  const HANDLE stopped = start_endless_thread();
  EXPECT_EQ(exit_code_of(stopped), STILL_ACTIVE);
  EXPECT_EQ(WaitForSingleObject(stopped, 0), WAIT_TIMEOUT);
  EXPECT_TRUE(platform::exit_process(GetParam()));
  EXPECT_EQ(exit_code_of(stopped), GetParam());
  EXPECT_EQ(WaitForSingleObject(stopped, 0), WAIT_OBJECT_0);
  EXPECT_EQ(platform::live_threads(), 0);
  EXPECT_EQ(exit_code_of(ended), 42u) << "it had one of its own";
}

INSTANTIATE_TEST_SUITE_P(, exit_code_test, testing::Values(0u, 1u, STILL_ACTIVE, 0xC0000005u));

// A thread that was stopped outside of a section has nothing to do with it, though it was the last one within: neither
// for a thread that finds it free nor for one that finds it taken, by somebody who is not noted as its owner yet.
TEST_F(end_test, a_section_that_a_stopped_thread_had_left_goes_on) {
  CRITICAL_SECTION section;
  InitializeCriticalSection(&section);
  start_endless_thread([&] {
    EnterCriticalSection(&section);
    EnterCriticalSection(&section);
    LeaveCriticalSection(&section);
    LeaveCriticalSection(&section);
  });
  EXPECT_TRUE(platform::kill_other_threads());
  pthread_mutex_lock(&section.mutex);
  std::atomic<int> entered{0};
  platform::start_thread([&] {
    EnterCriticalSection(&section);
    ++entered;
    LeaveCriticalSection(&section);
  });
  std::this_thread::sleep_for(20ms);
  EXPECT_EQ(entered, 0);
  pthread_mutex_unlock(&section.mutex);
  EXPECT_TRUE(platform::wait_for_live_threads(0));
  EXPECT_EQ(entered, 1);
  DeleteCriticalSection(&section);
}

struct orphan {
  CRITICAL_SECTION section;
  orphan() {
    InitializeCriticalSection(&section);
    start_endless_thread([this] { EnterCriticalSection(&section); });
  }
};

TEST_F(end_test, a_section_in_which_a_thread_was_stopped_stays_entered) {
  orphan left;
  EXPECT_FALSE(TryEnterCriticalSection(&left.section));
  EXPECT_TRUE(platform::exit_process());
  EXPECT_FALSE(TryEnterCriticalSection(&left.section));
  EXPECT_EQ(platform::locks_held(), 0);
  EXPECT_EQ(platform::live_critical_sections(), 1);
  DeleteCriticalSection(&left.section);
  EXPECT_EQ(platform::live_critical_sections(), 0);
}

TEST_F(end_death_test, who_enters_a_section_in_which_a_thread_was_stopped_stops_the_program) {
  EXPECT_DEATH(
      {
        orphan left;
        platform::exit_process();
        EnterCriticalSection(&left.section);
      },
      "EnterCriticalSection of a section in which a thread was killed");
}

TEST_F(end_death_test, a_section_that_a_living_thread_is_in_is_not_deleted) {
  EXPECT_DEATH(
      {
        orphan left;
        DeleteCriticalSection(&left.section);
      },
      "DeleteCriticalSection of a section that a thread is in");
}

std::vector<DWORD> reasons;  // under the loader lock

void attach_library() {
  reasons.clear();
  platform::library_hooks hooks;
  hooks.dll_main = [](HINSTANCE, DWORD reason, LPVOID) {
    reasons.push_back(reason);
    return TRUE;
  };
  platform::set_library_hooks(hooks);
  platform::attach_process();
}

TEST_F(end_test, the_program_s_own_clean_up_follows_what_the_library_is_told) {
  attach_library();
  DWORD id = 0;
  std::vector<DWORD> cleaned_up;
  platform::after_thread_end([&] {
    EXPECT_EQ(reasons.back(), static_cast<DWORD>(DLL_THREAD_DETACH));
    EXPECT_EQ(platform::live_threads(), 1) << "the thread itself";
    cleaned_up.push_back(GetCurrentThreadId());
  });
  platform::join(platform::start_thread([&] { id = GetCurrentThreadId(); }));
  EXPECT_EQ(cleaned_up, (std::vector<DWORD>{id}));
}

TEST_F(end_test, a_stopped_thread_cleans_nothing_up) {
  attach_library();
  std::atomic<int> cleaned_up{0};
  platform::after_thread_end([&] { ++cleaned_up; });
  start_endless_thread();
  EXPECT_TRUE(platform::exit_process());
  EXPECT_EQ(cleaned_up, 0);
  EXPECT_EQ(reasons, (std::vector<DWORD>{DLL_PROCESS_ATTACH, DLL_THREAD_ATTACH, DLL_PROCESS_DETACH}));
}

}  // namespace
