// The stand-in for <windows.h>: the loader lock, and libraries that stay loaded.
#include <thread>

#include "platform/faults.h"
#include "support/platform_test.h"

using namespace std::chrono_literals;

namespace {

struct loader_test : platform_test {};
using loader_death_test = loader_test;

INT_PTR answer() {
  return 42;
}

FARPROC look_up(const char* name) {
  return std::string(name) == "answer" ? answer : nullptr;
}

std::vector<DWORD> reasons;  // under the loader lock

void attach_library(BOOL (*dll_main)(HINSTANCE, DWORD, LPVOID)) {
  reasons.clear();
  platform::library_hooks hooks;
  hooks.module = reinterpret_cast<HINSTANCE>(0x7FFE0000);
  hooks.dll_main = dll_main;
  platform::set_library_hooks(hooks);
  platform::provide_library("other.dll", look_up);
  platform::attach_process();
}

BOOL note_reason(HINSTANCE, DWORD reason, LPVOID) {
  reasons.push_back(reason);
  return TRUE;
}

// A thread that stands in its DLL_THREAD_DETACH until it is let go.
std::atomic<bool> stands;
std::atomic<bool> may_go;

BOOL stand_in_detach(HINSTANCE, DWORD reason, LPVOID) {
  if (reason != DLL_THREAD_DETACH || stands.exchange(true)) return TRUE;
  while (!may_go) std::this_thread::sleep_for(1ms);
  return TRUE;
}

HANDLE start_thread_that_stands() {
  stands = may_go = false;
  const HANDLE thread = platform::start_thread([] {});
  while (!stands) std::this_thread::sleep_for(1ms);
  return thread;
}

// Does `work` on another thread while one stands in its end. Result: whether it waited for that one.
bool waits_for_loader(const std::function<void()>& work) {
  std::atomic<DWORD> worker_id{0};
  std::atomic<bool> starts{false};
  std::atomic<bool> done{false};
  const HANDLE worker = platform::start_thread([&] {
    worker_id = GetCurrentThreadId();
    while (!starts) std::this_thread::sleep_for(1ms);
    work();
    done = true;
  });
  while (worker_id == 0) std::this_thread::sleep_for(1ms);
  const HANDLE standing = start_thread_that_stands();
  starts = true;
  while (!done && platform::blocked_in(worker_id) == nullptr) std::this_thread::sleep_for(1ms);
  const bool waited = !done;
  if (waited) {
    EXPECT_STREQ(platform::blocked_in(worker_id), "loader lock");
  }
  may_go = true;
  EXPECT_TRUE(platform::join(standing));
  EXPECT_TRUE(platform::join(worker));
  EXPECT_TRUE(done);
  return waited;
}

TEST_F(loader_test, a_load_and_a_look_up_wait_for_a_thread_in_its_end) {
  attach_library(stand_in_detach);
  const HMODULE other = LoadLibraryA("other.dll");
  EXPECT_TRUE(waits_for_loader([other] { EXPECT_EQ(LoadLibraryA("other.dll"), other); }));
  EXPECT_TRUE(waits_for_loader([other] { EXPECT_EQ(GetProcAddress(other, "answer"), answer); }));
  EXPECT_FALSE(waits_for_loader([] { EXPECT_NE(GetCurrentProcessId(), 0u); }));
}

TEST_F(loader_test, the_thread_that_is_told_may_load_and_look_up_itself) {
  attach_library([](HINSTANCE, DWORD reason, LPVOID) -> BOOL {
    reasons.push_back(reason);
    return GetProcAddress(LoadLibraryA("other.dll"), "answer") == answer;
  });
  EXPECT_EQ(platform::load_count("other.dll"), 1);
  platform::join(platform::start_thread([] {}));
  EXPECT_EQ(platform::load_count("other.dll"), 3);
  EXPECT_EQ(reasons, (std::vector<DWORD>{DLL_PROCESS_ATTACH, DLL_THREAD_ATTACH, DLL_THREAD_DETACH}));
}

// What a look-up asks may itself look up, on the same thread.
TEST_F(loader_test, a_look_up_may_call_the_loader) {
  static HMODULE other;
  platform::provide_library("other.dll", look_up);
  platform::provide_library("outer.dll", [](const char* name) { return GetProcAddress(other, name); });
  other = LoadLibraryA("other.dll");
  EXPECT_EQ(GetProcAddress(LoadLibraryA("outer.dll"), "answer"), answer);
}

bool pin() {
  HMODULE module = nullptr;
  const BOOL pinned =
      GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_PIN, "", &module);
  EXPECT_EQ(module, pinned ? reinterpret_cast<HMODULE>(0x7FFE0000) : nullptr);
  return pinned;
}

TEST_F(loader_test, a_pinned_library_is_told_of_the_end_of_the_process_alone) {
  attach_library(note_reason);
  EXPECT_TRUE(pin());
  EXPECT_TRUE(platform::detach_process());
  EXPECT_TRUE(platform::process_attached());
  EXPECT_EQ(reasons, (std::vector<DWORD>{DLL_PROCESS_ATTACH}));
  EXPECT_TRUE(platform::exit_process());
  EXPECT_FALSE(platform::process_attached());
  EXPECT_EQ(reasons, (std::vector<DWORD>{DLL_PROCESS_ATTACH, DLL_PROCESS_DETACH}));
}

TEST_F(loader_test, a_library_that_could_not_be_pinned_is_unloaded) {
  attach_library(note_reason);
  platform::fail_call("GetModuleHandleExA", 1);
  EXPECT_FALSE(pin());
  EXPECT_TRUE(platform::detach_process());
  EXPECT_FALSE(platform::process_attached());
  EXPECT_EQ(reasons, (std::vector<DWORD>{DLL_PROCESS_ATTACH, DLL_PROCESS_DETACH}));
}

TEST_F(loader_test, the_next_process_is_not_pinned) {
  attach_library(note_reason);
  EXPECT_TRUE(pin());
  platform::reset();
  attach_library(note_reason);
  EXPECT_TRUE(platform::detach_process());
  EXPECT_FALSE(platform::process_attached());
}

TEST_F(loader_death_test, a_module_is_found_in_no_other_way) {
  HMODULE module;
  EXPECT_DEATH(GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_PIN, "other.dll", &module), "flags");
}

}  // namespace
