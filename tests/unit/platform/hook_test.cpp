// What a test can do in the middle of the library: work of its own before a call of the platform's.
#include <utility>

#include "platform/faults.h"
#include "support/platform_test.h"

namespace {

struct hook_test : platform_test {};

TEST_F(hook_test, work_runs_once_before_the_call_that_was_named) {
  int slots_before = -1;
  platform::before_call("TlsAlloc", 2, [&] { slots_before = platform::live_tls_slots(); });
  TlsAlloc();
  EXPECT_EQ(slots_before, -1);
  TlsAlloc();
  EXPECT_EQ(slots_before, 1);
  slots_before = -1;
  TlsAlloc();
  EXPECT_EQ(slots_before, -1);
}

TEST_F(hook_test, work_runs_on_the_thread_of_the_call) {
  DWORD caller = 0;
  DWORD worker = 0;
  platform::before_call("TlsAlloc", 1, [&] { worker = GetCurrentThreadId(); });
  platform::join(platform::start_thread([&] {
    caller = GetCurrentThreadId();
    TlsAlloc();
  }));
  EXPECT_NE(worker, 0u);
  EXPECT_EQ(worker, caller);
}

TEST_F(hook_test, a_second_order_takes_the_place_of_the_first) {
  std::string ran;
  platform::before_call("TlsAlloc", 1, [&] { ran += "first "; });
  platform::before_call("TlsAlloc", 2, [&] { ran += "second "; });
  platform::before_call("GetModuleFileNameA", 1, [&] { ran += "other "; });
  TlsAlloc();
  EXPECT_EQ(ran, "");
  TlsAlloc();
  EXPECT_EQ(ran, "second ");
  GetModuleFileNameA(nullptr, nullptr, 0);
  EXPECT_EQ(ran, "second other ");
}

TEST_F(hook_test, work_may_call_the_platform_and_decide_about_the_call) {
  DWORD inner = TLS_OUT_OF_INDEXES;
  platform::before_call("TlsAlloc", 1, [&] {
    inner = TlsAlloc();
    platform::fail_calls_from("TlsAlloc", 0);
  });
  EXPECT_EQ(TlsAlloc(), TLS_OUT_OF_INDEXES);
  EXPECT_EQ(inner, 0u);
  EXPECT_EQ(platform::call_count("TlsAlloc"), 2);
}

TEST_F(hook_test, work_that_was_not_reached_is_forgotten_with_the_rest) {
  bool ran = false;
  platform::before_call("TlsAlloc", 1, [&] { ran = true; });
  platform::reset();
  TlsAlloc();
  EXPECT_FALSE(ran);
}

using heard_calls = std::vector<std::pair<std::string, ULONG_PTR>>;

TEST_F(hook_test, each_call_is_heard_before_it_does_anything) {
  heard_calls heard;
  int slots_before = -1;
  platform::on_each_call([&](const char* function, ULONG_PTR object) {
    heard.emplace_back(function, object);
    slots_before = platform::live_tls_slots();
  });
  CRITICAL_SECTION section;
  const auto address = reinterpret_cast<ULONG_PTR>(&section);
  const DWORD slot = TlsAlloc();
  EXPECT_EQ(slots_before, 0);
  InitializeCriticalSection(&section);
  EnterCriticalSection(&section);
  LeaveCriticalSection(&section);
  DeleteCriticalSection(&section);
  TlsFree(slot);
  EXPECT_EQ(slots_before, 1);
  const heard_calls expected = {
      {"TlsAlloc", 0}, {"InitializeCriticalSection", address}, {"DeleteCriticalSection", address}, {"TlsFree", slot}};
  EXPECT_EQ(heard, expected);
  platform::on_each_call(nullptr);
  TlsAlloc();
  EXPECT_EQ(heard.size(), 4u);
}

TEST_F(hook_test, a_call_that_fails_is_heard_too) {
  int heard = 0;
  platform::on_each_call([&](const char*, ULONG_PTR) { ++heard; });
  platform::fail_call("TlsAlloc", 1);
  EXPECT_EQ(TlsAlloc(), TLS_OUT_OF_INDEXES);
  EXPECT_EQ(heard, 1);
  platform::reset();
  TlsAlloc();
  EXPECT_EQ(heard, 1);
}

}  // namespace
