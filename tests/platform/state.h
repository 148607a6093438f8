// What the sources of the simulated platform share.
#pragma once

#include <windows.h>

#include <atomic>
#include <chrono>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>

namespace platform {

// Thrown in a thread that is being killed, caught where the thread began.
struct thread_killed {};

// Work sent from one thread to another, run when the other pumps. Its fields are guarded by the message lock.
struct sent_work {
  std::function<void()> run;
  bool done = false;
};

struct thread_record {
  DWORD id = 0;
  bool made_here = false;
  pthread_t native{};
  bool joined = false;  // guarded by the thread lock
  std::function<DWORD()> work;
  LPVOID* slots = nullptr;  // guarded by the thread lock; null once the thread has ended
  std::atomic<DWORD> exit_code{STILL_ACTIVE};
  std::atomic<bool> ended{false};  // an exit code may be STILL_ACTIVE too
  std::atomic<bool> killed{false};
  std::atomic<const char*> blocked_in{nullptr};
  std::mutex sleep_lock;
  pthread_cond_t* sleeping_on = nullptr;         // guarded by sleep_lock
  int locks_held = 0;                            // the thread's own
  DWORD last_error = 0;                          // the thread's own
  std::deque<std::shared_ptr<sent_work>> inbox;  // guarded by the message lock
};

// The calling thread's record, made when it has none.
thread_record& self();

// Null when there is no such thread. Records live until the next reset.
thread_record* find_thread(DWORD id);

// Says in a thread's record what it waits in, for the time of a scope.
struct blocked_scope {
  explicit blocked_scope(const char* what) { self().blocked_in.store(what, std::memory_order_relaxed); }
  ~blocked_scope() { self().blocked_in.store(nullptr, std::memory_order_relaxed); }
  blocked_scope(const blocked_scope&) = delete;
  blocked_scope& operator=(const blocked_scope&) = delete;
};

// Counts a call of `function`; true when it has been ordered to fail, with the last error set.
bool ordered_to_fail(const char* function);

// For who listens to each call.
void tell_of_call(const char* function, ULONG_PTR object);

// Prints and stops the program: the library did what the platform punishes.
[[noreturn]] void misuse(const char* what);

// The loader lock, for the time of a scope. A thread may be in it several times.
struct loader_scope {
  loader_scope();
  ~loader_scope();
  loader_scope(const loader_scope&) = delete;
  loader_scope& operator=(const loader_scope&) = delete;
};

// Calls DllMain under the loader lock, once the process is attached.
void tell_library(DWORD reason);

// Runs what a test wants to be done after a thread's end has been told.
void run_after_thread_end();
const struct library_hooks& hooks();
void wake_loader_waiters();

// Runs `work` on the thread that owns `hwnd`, at once when that is the calling one. With `wait`, returns when it has
// run, or false after a stall.
bool run_on_owner(DWORD owner_id, HWND hwnd, const char* call, bool wait, std::function<void()> work);

// The same, but to give up after `time` is nothing amiss.
bool run_on_owner_within(DWORD owner_id, std::chrono::milliseconds time, std::function<void()> work);
void wake_message_waiters();

// What only the ending process could still have reached, and nobody has to free: for a leak checker it stays in reach.
void keep_until_end(LPVOID value);
void keep_window_properties();

// A thread has ended: its windows and unread messages go with it.
void forget_thread_windows(DWORD thread_id);
void forget_thread_messages(thread_record& thread);
void forget_thread_device_contexts(DWORD thread_id);

// What a window's end means to its device contexts. The window's own context is made at the window's making.
HDC make_own_dc(HWND hwnd);
void forget_window_device_contexts(HWND hwnd);

// The window's pixel format, kept with the window; -1 for no such window.
int window_pixel_format(HWND hwnd);
void set_window_pixel_format(HWND hwnd, int format);
HDC window_own_dc(HWND hwnd);

void end_threads();
void reset_threads();
void reset_locks();
void reset_process();
void reset_registry();
void reset_monitors();
void reset_windows();
void reset_messages();
void reset_positions();
void reset_device_contexts();
void reset_faults();

}  // namespace platform
