// The stand-in for <windows.h>: threads, locks, process, registry, monitors.
#include <gtest/gtest.h>

#include <thread>

#include "platform/desktop.h"
#include "platform/faults.h"
#include "platform/process.h"
#include "support/allocation.h"
#include "support/platform_test.h"

using namespace std::chrono_literals;

namespace {

struct guarded_number {
  CRITICAL_SECTION lock;
  CONDITION_VARIABLE changed;
  int value = 0;

  guarded_number() {
    InitializeCriticalSection(&lock);
    InitializeConditionVariable(&changed);
  }
  ~guarded_number() { DeleteCriticalSection(&lock); }
};

void set_number(guarded_number& number, int value) {
  EnterCriticalSection(&number.lock);
  number.value = value;
  WakeAllConditionVariable(&number.changed);
  LeaveCriticalSection(&number.lock);
}

void wait_for_number(guarded_number& number, int value) {
  EnterCriticalSection(&number.lock);
  while (number.value != value) SleepConditionVariableCS(&number.changed, &number.lock, INFINITE);
  LeaveCriticalSection(&number.lock);
}

TEST_F(platform_test, a_critical_section_can_be_entered_again_by_its_thread) {
  guarded_number number;
  EnterCriticalSection(&number.lock);
  EnterCriticalSection(&number.lock);
  EXPECT_EQ(platform::locks_held(), 2);
  LeaveCriticalSection(&number.lock);
  LeaveCriticalSection(&number.lock);
  EXPECT_EQ(platform::locks_held(), 0);
  EXPECT_EQ(platform::most_locks_held(), 2);
}

TEST_F(platform_test, a_critical_section_keeps_threads_apart) {
  guarded_number number;
  constexpr int rounds = 2000;
  std::vector<HANDLE> threads;
  for (int i = 0; i < 4; ++i) {
    threads.push_back(platform::start_thread([&] {
      for (int round = 0; round < rounds; ++round) {
        EnterCriticalSection(&number.lock);
        ++number.value;
        LeaveCriticalSection(&number.lock);
      }
    }));
  }
  for (const HANDLE thread : threads) EXPECT_TRUE(platform::join(thread));
  EXPECT_EQ(number.value, 4 * rounds);
}

TEST_F(platform_test, a_condition_wakes_all_sleepers) {
  guarded_number number;
  std::vector<HANDLE> threads;
  for (int i = 0; i < 3; ++i) {
    threads.push_back(platform::start_thread([&] { wait_for_number(number, 7); }));
  }
  set_number(number, 7);
  for (const HANDLE thread : threads) EXPECT_TRUE(platform::join(thread));
}

TEST_F(platform_test, a_sleep_with_a_time_ends_by_itself) {
  guarded_number number;
  EnterCriticalSection(&number.lock);
  EXPECT_FALSE(SleepConditionVariableCS(&number.changed, &number.lock, 10));
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_TIMEOUT));
  EXPECT_EQ(platform::locks_held(), 1);
  LeaveCriticalSection(&number.lock);
}

TEST_F(platform_test, a_spurious_wake_comes_when_ordered) {
  guarded_number number;
  platform::set_spurious_wakes(1);
  EnterCriticalSection(&number.lock);
  EXPECT_TRUE(SleepConditionVariableCS(&number.changed, &number.lock, INFINITE));
  LeaveCriticalSection(&number.lock);
}

using platform_death_test = platform_test;

TEST_F(platform_death_test, a_deleted_critical_section_is_not_entered) {
  CRITICAL_SECTION section;
  InitializeCriticalSection(&section);
  EXPECT_EQ(platform::live_critical_sections(), 1);
  DeleteCriticalSection(&section);
  EXPECT_EQ(platform::live_critical_sections(), 0);
  EXPECT_DEATH(EnterCriticalSection(&section), "not in use");
}

DWORD return_argument(LPVOID argument) {
  return static_cast<DWORD>(reinterpret_cast<UINT_PTR>(argument));
}

TEST_F(platform_test, a_thread_has_an_id_and_an_exit_code) {
  DWORD id = 0;
  const HANDLE thread = CreateThread(nullptr, 0, return_argument, reinterpret_cast<LPVOID>(42), 0, &id);
  ASSERT_NE(thread, nullptr);
  EXPECT_NE(id, GetCurrentThreadId());
  EXPECT_TRUE(platform::wait_for_live_threads(0));
  DWORD code = 0;
  EXPECT_TRUE(GetExitCodeThread(thread, &code));
  EXPECT_EQ(code, 42u);
  EXPECT_TRUE(CloseHandle(thread));
  EXPECT_FALSE(CloseHandle(thread));
  EXPECT_FALSE(GetExitCodeThread(thread, &code));
}

TEST_F(platform_test, slots_belong_to_threads) {
  const DWORD slot = TlsAlloc();
  EXPECT_EQ(TlsGetValue(slot), nullptr);
  int mine = 0;
  TlsSetValue(slot, &mine);
  platform::join(platform::start_thread([&] {
    EXPECT_EQ(TlsGetValue(slot), nullptr);
    TlsSetValue(slot, reinterpret_cast<LPVOID>(8));
    EXPECT_EQ(TlsGetValue(slot), reinterpret_cast<LPVOID>(8));
  }));
  EXPECT_EQ(TlsGetValue(slot), &mine);
  EXPECT_EQ(platform::live_tls_slots(), 1);
  EXPECT_TRUE(TlsFree(slot));
  EXPECT_FALSE(TlsFree(slot));
  // A slot that is given out again is empty in every thread.
  EXPECT_EQ(TlsAlloc(), slot);
  EXPECT_EQ(TlsGetValue(slot), nullptr);
  EXPECT_EQ(TlsGetValue(TLS_OUT_OF_INDEXES), nullptr);
}

std::vector<std::pair<DWORD, DWORD>> told;  // reason and thread, under the loader lock

BOOL note_reason(HINSTANCE, DWORD reason, LPVOID) {
  told.emplace_back(reason, GetCurrentThreadId());
  return TRUE;
}

TEST_F(platform_test, the_library_is_told_of_threads) {
  told.clear();
  platform::library_hooks hooks;
  hooks.dll_main = note_reason;
  platform::set_library_hooks(hooks);
  platform::join(platform::start_thread([] {}));
  EXPECT_TRUE(told.empty());
  EXPECT_TRUE(platform::attach_process());
  DWORD id = 0;
  platform::join(platform::start_thread([&] { id = GetCurrentThreadId(); }));
  platform::detach_process();
  const DWORD me = GetCurrentThreadId();
  const decltype(told) expected = {
      {DLL_PROCESS_ATTACH, me}, {DLL_THREAD_ATTACH, id}, {DLL_THREAD_DETACH, id}, {DLL_PROCESS_DETACH, me}};
  EXPECT_EQ(told, expected);
}

TEST_F(platform_test, the_end_of_the_process_stops_threads_without_telling) {
  told.clear();
  platform::library_hooks hooks;
  hooks.dll_main = note_reason;
  platform::set_library_hooks(hooks);
  platform::attach_process();
  guarded_number number;
  const HANDLE sleeper = platform::start_thread([&] { wait_for_number(number, 1); });
  std::atomic<bool> runs{false};
  const HANDLE runner = platform::start_thread([&] {
    for (;;) {
      runs = true;
      platform::kill_point();
      std::this_thread::sleep_for(1ms);
    }
  });
  while (!runs) std::this_thread::sleep_for(1ms);
  platform::exit_process();
  for (const HANDLE thread : {sleeper, runner}) {
    DWORD code = STILL_ACTIVE;
    EXPECT_TRUE(GetExitCodeThread(thread, &code));
    EXPECT_NE(code, STILL_ACTIVE);
  }
  for (const auto& [reason, thread] : told) EXPECT_NE(reason, static_cast<DWORD>(DLL_THREAD_DETACH));
  EXPECT_EQ(told.back().first, static_cast<DWORD>(DLL_PROCESS_DETACH));
  // The section was left by the thread that slept in it.
  set_number(number, 2);
}

TEST_F(platform_test, a_detaching_thread_holds_the_loader_lock) {
  static std::atomic<bool> inside{false};
  static std::atomic<bool> go_on{false};
  inside = go_on = false;
  platform::library_hooks hooks;
  hooks.dll_main = [](HINSTANCE, DWORD reason, LPVOID) {
    if (reason != DLL_THREAD_DETACH || go_on) return TRUE;
    inside = true;
    while (!go_on) std::this_thread::sleep_for(1ms);
    return TRUE;
  };
  platform::set_library_hooks(hooks);
  platform::attach_process();
  const HANDLE first = platform::start_thread([] {});
  while (!inside) std::this_thread::sleep_for(1ms);
  DWORD second_id = 0;
  const HANDLE second = CreateThread(nullptr, 0, return_argument, nullptr, 0, &second_id);
  while (platform::blocked_in(second_id) == nullptr) std::this_thread::sleep_for(1ms);
  EXPECT_STREQ(platform::blocked_in(second_id), "loader lock");
  EXPECT_EQ(platform::live_threads(), 2);
  go_on = true;
  EXPECT_TRUE(platform::join(first));
  EXPECT_TRUE(platform::join(second));
}

TEST_F(platform_test, a_function_fails_when_ordered) {
  platform::fail_call("TlsAlloc", 2);
  EXPECT_NE(TlsAlloc(), TLS_OUT_OF_INDEXES);
  EXPECT_EQ(TlsAlloc(), TLS_OUT_OF_INDEXES);
  EXPECT_NE(TlsAlloc(), TLS_OUT_OF_INDEXES);
  EXPECT_EQ(platform::call_count("TlsAlloc"), 3);
  platform::fail_calls_from("CreateThread", 1, ERROR_ACCESS_DENIED);
  DWORD id;
  for (int i = 0; i < 2; ++i) {
    SetLastError(0);
    EXPECT_EQ(CreateThread(nullptr, 0, return_argument, nullptr, 0, &id), nullptr);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_ACCESS_DENIED));
  }
  platform::stop_failing("CreateThread");
  EXPECT_NE(CreateThread(nullptr, 0, return_argument, nullptr, 0, &id), nullptr);
  EXPECT_EQ(platform::leaks(true).size(), 1u);
}

TEST_F(platform_test, an_allocation_fails_when_ordered) {
  allocation::fail_call(2);
  void* first = std::calloc(1, 8);
  void* second = std::malloc(8);
  void* third = std::malloc(8);
  EXPECT_EQ(allocation::calls(), 3);
  allocation::stop_failing();
  EXPECT_NE(first, nullptr);
  EXPECT_EQ(second, nullptr);
  EXPECT_NE(third, nullptr);
  std::free(first);
  std::free(third);
}

TEST_F(platform_test, freed_blocks_are_noted) {
  allocation::watch();
  void* first = std::malloc(8);
  void* second = std::malloc(8);
  const auto first_address = reinterpret_cast<std::uintptr_t>(first);
  const auto second_address = reinterpret_cast<std::uintptr_t>(second);
  EXPECT_TRUE(allocation::is_live(first_address));
  std::free(second);
  std::free(first);
  allocation::stop_watching();
  EXPECT_FALSE(allocation::is_live(first_address));
  EXPECT_EQ(allocation::freed(), (std::vector<std::uintptr_t>{second_address, first_address}));
}

struct read_value {
  LSTATUS status;
  DWORD size;
  DWORD number;
};

read_value read(const char* name, DWORD size) {
  HKEY key;
  read_value result = {ERROR_SUCCESS, size, 0xAAAAAAAA};
  result.status = RegOpenKeyA(HKEY_LOCAL_MACHINE, "Software\\Test", &key);
  if (result.status != ERROR_SUCCESS) return result;
  result.status = RegQueryValueExA(key, name, nullptr, nullptr, reinterpret_cast<LPBYTE>(&result.number), &result.size);
  EXPECT_EQ(RegCloseKey(key), ERROR_SUCCESS);
  return result;
}

TEST_F(platform_test, the_registry_answers_as_the_platform_does) {
  EXPECT_EQ(read("Value", 4).status, ERROR_FILE_NOT_FOUND);
  platform::set_registry_key("Software\\Test");
  EXPECT_EQ(read("Value", 4).status, ERROR_FILE_NOT_FOUND);
  platform::set_registry_number("SOFTWARE\\test", "value", 77);
  EXPECT_EQ(read("Value", 4).status, ERROR_SUCCESS);
  EXPECT_EQ(read("Value", 4).number, 77u);
  platform::set_registry_value("Software\\Test", "Value", REG_QWORD, std::vector<BYTE>(8));
  EXPECT_EQ(read("Value", 4).status, ERROR_MORE_DATA);
  EXPECT_EQ(read("Value", 4).size, 8u);
  platform::set_registry_value("Software\\Test", "Value", REG_NONE, {});
  EXPECT_EQ(read("Value", 4).status, ERROR_SUCCESS);
  EXPECT_EQ(read("Value", 4).size, 0u);
  EXPECT_EQ(read("Value", 4).number, 0xAAAAAAAA);
  platform::fail_call("RegOpenKeyA", 1, ERROR_ACCESS_DENIED);
  EXPECT_EQ(read("Value", 4).status, ERROR_ACCESS_DENIED);
  EXPECT_EQ(platform::open_registry_keys(), 0);
}

TEST_F(platform_test, the_environment_answers_as_the_platform_does) {
  char value[4] = "-";
  EXPECT_EQ(GetEnvironmentVariableA("Name", value, sizeof value), 0u);
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_ENVVAR_NOT_FOUND));
  platform::set_environment_variable("NAME", "abc");
  EXPECT_EQ(GetEnvironmentVariableA("Name", value, sizeof value), 3u);
  EXPECT_STREQ(value, "abc");
  platform::set_environment_variable("Name", "abcd");
  EXPECT_EQ(GetEnvironmentVariableA("Name", value, sizeof value), 5u);
  EXPECT_STREQ(value, "abc");
  platform::fail_call("GetEnvironmentVariableA", 1, ERROR_ACCESS_DENIED);
  EXPECT_EQ(GetEnvironmentVariableA("Name", nullptr, 0), 0u);
}

TEST_F(platform_test, a_module_name_is_cut_to_the_buffer) {
  platform::set_executable("C:\\a\\b.exe");
  char buffer[32];
  EXPECT_EQ(GetModuleFileNameA(nullptr, buffer, sizeof buffer), 10u);
  EXPECT_STREQ(buffer, "C:\\a\\b.exe");
  EXPECT_EQ(GetModuleFileNameA(nullptr, buffer, 5), 5u);
  EXPECT_STREQ(buffer, "C:\\a");
}

INT_PTR known_function() {
  return 1;
}

TEST_F(platform_test, a_library_is_found_by_name) {
  EXPECT_EQ(LoadLibraryA("other.dll"), nullptr);
  platform::provide_library(
      "other.dll", [](const char* name) -> FARPROC { return std::string(name) == "known" ? known_function : nullptr; });
  const HMODULE library = LoadLibraryA("OTHER.dll");
  ASSERT_NE(library, nullptr);
  EXPECT_EQ(GetProcAddress(library, "known"), known_function);
  EXPECT_EQ(GetProcAddress(library, "unknown"), nullptr);
  EXPECT_EQ(GetProcAddress(nullptr, "known"), nullptr);
  EXPECT_EQ(platform::load_count("other.dll"), 1);
}

TEST_F(platform_test, reports_are_kept) {
  OutputDebugStringA("first\n");
  EXPECT_EQ(MessageBoxA(nullptr, "text", "caption", MB_OK), IDOK);
  ASSERT_EQ(platform::debug_output().size(), 1u);
  EXPECT_EQ(platform::debug_output()[0].text, "first\n");
  ASSERT_EQ(platform::message_boxes().size(), 1u);
  EXPECT_EQ(platform::message_boxes()[0].caption, "caption");
}

TEST_F(platform_test, the_c_runtime_prints_as_the_platforms) {
  char buffer[8] = "xxxxxxx";
  EXPECT_EQ(_snprintf(buffer, 4, "%s", "abcdef"), -1);
  EXPECT_EQ(std::string(buffer, 8), std::string("abcdxxx\0", 8));
  EXPECT_EQ(_snprintf(buffer, 4, "%d", 1234), 4);
  EXPECT_EQ(std::string(buffer, 5), "1234x");
  char wide[40];
  EXPECT_EQ(_snprintf(wide, sizeof wide, "0x%p", reinterpret_cast<void*>(0x12ab)), 18);
  EXPECT_STREQ(wide, "0x00000000000012AB");
  EXPECT_EQ(_stricmp("MyApp.EXE", "myapp.exe"), 0);
  EXPECT_NE(_stricmp("a", "b"), 0);
}

BOOL collect_monitor(HMONITOR monitor, HDC, LPRECT, LPARAM data) {
  reinterpret_cast<std::vector<HMONITOR>*>(data)->push_back(monitor);
  return TRUE;
}

TEST_F(platform_test, monitors_are_enumerated_in_order) {
  platform::set_monitors({{{-1281, 0, 0, 800}}, {{0, 0, 1920, 1080}, true}});
  EXPECT_EQ(GetSystemMetrics(SM_CMONITORS), 2);
  EXPECT_EQ(GetSystemMetrics(SM_XVIRTUALSCREEN), -1281);
  EXPECT_EQ(GetSystemMetrics(SM_CXSCREEN), 1920);
  std::vector<HMONITOR> monitors;
  EXPECT_TRUE(EnumDisplayMonitors(nullptr, nullptr, collect_monitor, reinterpret_cast<LPARAM>(&monitors)));
  ASSERT_EQ(monitors.size(), 2u);
  MONITORINFOEXA info = {};
  EXPECT_FALSE(GetMonitorInfoA(monitors[0], &info));
  info.cbSize = sizeof info;
  EXPECT_TRUE(GetMonitorInfoA(monitors[0], &info));
  EXPECT_EQ(info.rcMonitor.left, -1281);
  EXPECT_EQ(info.rcWork.bottom, 760);
  EXPECT_EQ(info.dwFlags, 0u);
  EXPECT_STREQ(info.szDevice, "\\\\.\\DISPLAY1");
}

TEST_F(platform_test, rectangles_join_and_meet) {
  const RECT left = {0, 0, 10, 10};
  const RECT right = {8, 2, 20, 6};
  const RECT empty = {5, 5, 5, 9};
  RECT out;
  EXPECT_TRUE(UnionRect(&out, &left, &right));
  EXPECT_EQ(out.right, 20);
  EXPECT_EQ(out.bottom, 10);
  EXPECT_TRUE(UnionRect(&out, &empty, &right));
  EXPECT_EQ(out.left, 8);
  EXPECT_FALSE(UnionRect(&out, &empty, &empty));
  EXPECT_TRUE(IsRectEmpty(&out));
  EXPECT_TRUE(IntersectRect(&out, &left, &right));
  EXPECT_EQ(out.left, 8);
  EXPECT_EQ(out.right, 10);
  EXPECT_FALSE(IntersectRect(&out, &left, &empty));
  EXPECT_EQ(out.right, 0);
}

}  // namespace
