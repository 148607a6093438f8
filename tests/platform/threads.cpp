// Threads, their slots, their handles and their end.
#include <array>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <set>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "platform/faults.h"
#include "platform/process.h"
#include "state.h"

constinit thread_local LPVOID platform_tls_slots[platform_tls_slot_count] = {};

namespace platform {

namespace {

struct handle_record {
  thread_record* thread;
};

// Of a thread's end: its handle and its record tell it, and whoever waits is woken.
std::mutex lock;
std::condition_variable changed;
std::vector<std::unique_ptr<thread_record>> threads;
std::set<handle_record*> handles;
std::array<bool, platform_tls_slot_count> slot_taken;
DWORD last_id = 0;
std::atomic<DWORD> exit_code_of_process{1};

thread_local thread_record* current = nullptr;

// The pseudo handle that stands for whichever thread uses it.
const HANDLE current_thread_handle = reinterpret_cast<HANDLE>(static_cast<LONG_PTR>(-2));

// With the lock held.
thread_record& add_record() {
  threads.push_back(std::make_unique<thread_record>());
  last_id += 4;
  threads.back()->id = last_id;
  return *threads.back();
}

void adopt(thread_record& record) {
  current = &record;
  record.slots = platform_tls_slots;
}

// Never destroyed.
std::vector<LPVOID>& kept = *new std::vector<LPVOID>;

void finish(thread_record& record, DWORD code) {
  if (record.killed.load()) {
    keep_window_properties();
    for (LPVOID value : platform_tls_slots) keep_until_end(value);
  }
  forget_thread_messages(record);
  forget_thread_windows(record.id);
  forget_thread_device_contexts(record.id);
  const std::lock_guard guard(lock);
  record.slots = nullptr;
  record.exit_code.store(code);
  record.ended.store(true);
  changed.notify_all();
}

void* run_thread(void* argument) {
  thread_record& record = *static_cast<thread_record*>(argument);
  {
    const std::lock_guard guard(lock);
    adopt(record);
  }
  DWORD code = 1;
  try {
    kill_point();
    tell_library(DLL_THREAD_ATTACH);
    code = record.work();
    tell_library(DLL_THREAD_DETACH);
    run_after_thread_end();
  } catch (const thread_killed&) {
    code = exit_code_of_process.load();
  }
  finish(record, code);
  return nullptr;
}

HANDLE launch(std::function<DWORD()> work, DWORD* id) {
  const std::lock_guard guard(lock);
  thread_record& record = add_record();
  record.made_here = true;
  record.work = std::move(work);
  // Said before the thread runs, as the platform does.
  if (id != nullptr) *id = record.id;
  if (pthread_create(&record.native, nullptr, run_thread, &record) != 0) misuse("no more threads on this host");
  auto* handle = new handle_record{&record};
  handles.insert(handle);
  return handle;
}

// With the lock held. Null when the handle is none of a thread.
thread_record* thread_of(HANDLE handle) {
  auto* record = static_cast<handle_record*>(handle);
  return handles.contains(record) ? record->thread : nullptr;
}

bool alive(const thread_record& thread) {
  return thread.made_here && !thread.ended.load();
}

// With the lock held.
int count_alive() {
  int count = 0;
  for (const auto& thread : threads) count += alive(*thread);
  return count;
}

void wake_for_kill(thread_record& thread) {
  thread.killed.store(true);
  const std::lock_guard guard(thread.sleep_lock);
  if (thread.sleeping_on != nullptr) pthread_cond_broadcast(thread.sleeping_on);
}

// Marks and wakes; true when none of them lives.
bool kill_round() {
  std::unique_lock guard(lock);
  bool any = false;
  for (const auto& thread : threads) {
    if (thread.get() == current || !alive(*thread)) continue;
    any = true;
    wake_for_kill(*thread);
  }
  guard.unlock();
  wake_loader_waiters();
  wake_message_waiters();
  return !any;
}

// ---- the watchdog ----

struct watchdog {
  std::mutex lock;
  std::condition_variable changed;
  std::chrono::steady_clock::time_point due;
  bool armed = false;
  bool runs = false;
};

// Never destroyed: its thread outlives everything.
watchdog& dog = *new watchdog;

void print_threads() {
  const std::lock_guard guard(lock);
  for (const auto& thread : threads) {
    if (thread->ended.load()) continue;
    const char* what = thread->blocked_in.load();
    std::fprintf(stderr, "  thread %u: %s\n", thread->id, what == nullptr ? "not in a wait" : what);
  }
}

void watch() {
  std::unique_lock guard(dog.lock);
  for (;;) {
    if (!dog.armed) {
      dog.changed.wait(guard);
      continue;
    }
    dog.changed.wait_until(guard, dog.due);
    if (!dog.armed || std::chrono::steady_clock::now() < dog.due) continue;
    std::fprintf(stderr, "the program has not ended in time; its threads wait in:\n");
    print_threads();
    std::abort();
  }
}

}  // namespace

thread_record& self() {
  if (current == nullptr) {
    const std::lock_guard guard(lock);
    adopt(add_record());
  }
  return *current;
}

void keep_until_end(LPVOID value) {
  const std::lock_guard guard(lock);
  if (value != nullptr) kept.push_back(value);
}

thread_record* find_thread(DWORD id) {
  const std::lock_guard guard(lock);
  for (const auto& thread : threads) {
    if (thread->id == id) return thread.get();
  }
  return nullptr;
}

void misuse(const char* what) {
  std::fprintf(stderr, "misuse of the platform: %s\n", what);
  std::abort();
}

HANDLE start_thread(std::function<void()> work) {
  return launch(
      [work = std::move(work)]() -> DWORD {
        work();
        return 0;
      },
      nullptr);
}

bool join(HANDLE handle, std::chrono::milliseconds patience) {
  std::unique_lock guard(lock);
  thread_record* thread = thread_of(handle);
  if (thread == nullptr) misuse("join of what is no thread");
  if (!changed.wait_for(guard, patience, [&] { return !alive(*thread); })) return false;
  handles.erase(static_cast<handle_record*>(handle));
  delete static_cast<handle_record*>(handle);
  const bool joins = thread->made_here && !std::exchange(thread->joined, true);
  guard.unlock();
  // Its stack comes back now, and not at the next reset: a test may have more threads than the host has room for.
  if (joins) pthread_join(thread->native, nullptr);
  return true;
}

bool kill_other_threads(DWORD exit_code) {
  exit_code_of_process.store(exit_code);
  const auto due = std::chrono::steady_clock::now() + std::chrono::seconds(30);
  while (!kill_round()) {
    if (std::chrono::steady_clock::now() > due) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return true;
}

void kill_point() {
  if (self().killed.load(std::memory_order_relaxed)) throw thread_killed{};
}

int live_threads() {
  const std::lock_guard guard(lock);
  return count_alive();
}

bool wait_for_live_threads(int count, std::chrono::milliseconds patience) {
  std::unique_lock guard(lock);
  return changed.wait_for(guard, patience, [&] { return count_alive() <= count; });
}

const char* blocked_in(DWORD thread_id) {
  const thread_record* thread = find_thread(thread_id);
  return thread == nullptr ? nullptr : thread->blocked_in.load();
}

bool wait_until_asleep(DWORD thread_id, std::chrono::milliseconds patience) {
  const auto due = std::chrono::steady_clock::now() + patience;
  while (std::chrono::steady_clock::now() < due) {
    const char* what = blocked_in(thread_id);
    if (what != nullptr && std::string(what) == "SleepConditionVariableCS") return true;
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return false;
}

void set_watchdog(std::chrono::seconds time) {
  const std::lock_guard guard(dog.lock);
  dog.armed = time.count() > 0;
  dog.due = std::chrono::steady_clock::now() + time;
  dog.changed.notify_all();
  if (dog.runs || !dog.armed) return;
  dog.runs = true;
  std::thread(watch).detach();
}

int live_tls_slots() {
  const std::lock_guard guard(lock);
  int count = 0;
  for (const bool taken : slot_taken) count += taken;
  return count;
}

int open_thread_handles() {
  const std::lock_guard guard(lock);
  return static_cast<int>(handles.size());
}

void end_threads() {
  if (wait_for_live_threads(0)) return;
  print_threads();
  misuse("reset with threads that do not end");
}

void reset_threads() {
  std::unique_lock guard(lock);
  for (handle_record* handle : handles) delete handle;
  handles.clear();
  std::vector<std::unique_ptr<thread_record>> ended;
  for (auto& thread : threads) {
    if (thread->made_here) ended.push_back(std::move(thread));
  }
  std::erase(threads, nullptr);
  for (const auto& thread : threads) {
    for (DWORD slot = 0; slot < platform_tls_slot_count; ++slot) thread->slots[slot] = nullptr;
  }
  slot_taken.fill(false);
  guard.unlock();
  for (const auto& thread : ended) {
    if (!thread->joined) pthread_join(thread->native, nullptr);
  }
}

}  // namespace platform

using namespace platform;

extern "C" DWORD TlsAlloc() {
  if (ordered_to_fail("TlsAlloc")) return TLS_OUT_OF_INDEXES;
  const std::lock_guard guard(lock);
  for (DWORD slot = 0; slot < platform_tls_slot_count; ++slot) {
    if (slot_taken[slot]) continue;
    slot_taken[slot] = true;
    for (const auto& thread : threads) {
      if (thread->slots != nullptr) thread->slots[slot] = nullptr;
    }
    return slot;
  }
  return TLS_OUT_OF_INDEXES;
}

extern "C" BOOL TlsFree(DWORD index) {
  tell_of_call("TlsFree", index);
  const std::lock_guard guard(lock);
  if (index >= platform_tls_slot_count || !slot_taken[index]) return FALSE;
  slot_taken[index] = false;
  return TRUE;
}

extern "C" BOOL TlsSetValue(DWORD index, LPVOID value) {
  self();
  if (index >= platform_tls_slot_count) {
    SetLastError(ERROR_INVALID_PARAMETER);
    return FALSE;
  }
  platform_tls_slots[index] = value;
  return TRUE;
}

extern "C" HANDLE CreateThread(LPSECURITY_ATTRIBUTES, SIZE_T, LPTHREAD_START_ROUTINE start, LPVOID argument,
                               DWORD flags, LPDWORD thread_id) {
  if (flags != 0) misuse("CreateThread with flags, which the simulation does not know");
  if (ordered_to_fail("CreateThread")) return nullptr;
  kill_point();
  return launch([start, argument] { return start(argument); }, thread_id);
}

extern "C" HANDLE GetCurrentThread() {
  return current_thread_handle;
}

extern "C" DWORD GetCurrentThreadId() {
  return self().id;
}

extern "C" BOOL GetExitCodeThread(HANDLE handle, LPDWORD exit_code) {
  if (ordered_to_fail("GetExitCodeThread")) return FALSE;
  if (handle == current_thread_handle) {
    *exit_code = STILL_ACTIVE;
    return TRUE;
  }
  std::unique_lock guard(lock);
  const thread_record* thread = thread_of(handle);
  if (thread != nullptr) {
    *exit_code = thread->exit_code.load();
    return TRUE;
  }
  guard.unlock();
  SetLastError(ERROR_INVALID_HANDLE);
  return FALSE;
}

extern "C" DWORD WaitForSingleObject(HANDLE handle, DWORD milliseconds) {
  if (milliseconds != 0) misuse("WaitForSingleObject with a time, which the simulation does not know");
  const std::lock_guard guard(lock);
  const thread_record* thread = thread_of(handle);
  if (thread == nullptr) return WAIT_FAILED;
  return alive(*thread) ? WAIT_TIMEOUT : WAIT_OBJECT_0;
}

extern "C" BOOL CloseHandle(HANDLE handle) {
  const std::lock_guard guard(lock);
  auto* record = static_cast<handle_record*>(handle);
  if (handles.erase(record) == 0) return FALSE;
  delete record;
  return TRUE;
}

extern "C" DWORD GetLastError() {
  return self().last_error;
}

extern "C" void SetLastError(DWORD error) {
  self().last_error = error;
}
