// Work that crosses from one thread to the owner of a window.
#include <condition_variable>

#include "platform/desktop.h"
#include "platform/process.h"
#include "state.h"

namespace platform {

namespace {

// Guards every thread's inbox, and the records below.
std::mutex lock;
std::condition_variable arrived;
std::vector<stall> stalled;
std::chrono::milliseconds patience;

constexpr std::chrono::milliseconds default_patience{3000};

// With the lock held, which it leaves for the time of the work.
bool run_next(std::unique_lock<std::mutex>& guard, thread_record& me) {
  if (me.inbox.empty()) return false;
  const std::shared_ptr<sent_work> work = me.inbox.front();
  me.inbox.pop_front();
  guard.unlock();
  work->run();
  guard.lock();
  work->done = true;
  arrived.notify_all();
  return true;
}

// With the lock held. A thread that waits for another one still does what is sent to it.
bool wait_for(std::unique_lock<std::mutex>& guard, const sent_work& work, std::chrono::milliseconds time) {
  thread_record& me = self();
  const blocked_scope blocked("message");
  const auto due = std::chrono::steady_clock::now() + time;
  while (!work.done) {
    if (me.killed.load()) throw thread_killed{};
    if (run_next(guard, me)) continue;
    if (arrived.wait_until(guard, due) == std::cv_status::timeout) return work.done;
  }
  return true;
}

enum class outcome { refused, done, given_up };

// Puts work into another thread's inbox, and waits for it unless `time` is 0. The calling thread's own is done at once.
outcome send_work(DWORD owner_id, std::function<void()> run, std::chrono::milliseconds time) {
  if (owner_id == GetCurrentThreadId()) {
    run();
    return outcome::done;
  }
  thread_record* owner = find_thread(owner_id);
  if (owner == nullptr) return outcome::refused;
  std::unique_lock guard(lock);
  if (owner->ended.load()) return outcome::refused;
  const auto work = std::make_shared<sent_work>();
  work->run = std::move(run);
  owner->inbox.push_back(work);
  arrived.notify_all();
  if (time.count() == 0 || wait_for(guard, *work, time)) return outcome::done;
  std::erase(owner->inbox, work);
  return outcome::given_up;
}

std::chrono::milliseconds patience_now() {
  const std::lock_guard guard(lock);
  return patience;
}

}  // namespace

bool run_on_owner(DWORD owner_id, HWND hwnd, const char* call, bool wait, std::function<void()> run) {
  const outcome came = send_work(owner_id, std::move(run), wait ? patience_now() : std::chrono::milliseconds(0));
  if (came != outcome::given_up) return came == outcome::done;
  const std::lock_guard guard(lock);
  stalled.push_back({GetCurrentThreadId(), owner_id, hwnd, call});
  return false;
}

bool run_on_owner_within(DWORD owner_id, std::chrono::milliseconds time, std::function<void()> run) {
  return send_work(owner_id, std::move(run), time) == outcome::done;
}

void wake_message_waiters() {
  const std::lock_guard guard(lock);
  arrived.notify_all();
}

void forget_thread_messages(thread_record& thread) {
  const std::lock_guard guard(lock);
  for (const auto& work : thread.inbox) work->done = true;
  thread.inbox.clear();
  arrived.notify_all();
}

int pump() {
  thread_record& me = self();
  std::unique_lock guard(lock);
  int count = 0;
  while (run_next(guard, me)) ++count;
  return count;
}

bool pump_until(const std::function<bool()>& done, std::chrono::milliseconds time) {
  const auto due = std::chrono::steady_clock::now() + time;
  while (!done()) {
    if (std::chrono::steady_clock::now() > due) return false;
    if (pump() > 0) continue;
    std::unique_lock guard(lock);
    // What `done` looks at does not wake anybody here.
    if (self().inbox.empty()) arrived.wait_for(guard, std::chrono::milliseconds(1));
  }
  return true;
}

std::vector<stall> stalls() {
  const std::lock_guard guard(lock);
  return stalled;
}

void clear_stalls() {
  const std::lock_guard guard(lock);
  stalled.clear();
}

void set_patience(std::chrono::milliseconds new_patience) {
  const std::lock_guard guard(lock);
  patience = new_patience;
}

void reset_messages() {
  pump();
  clear_stalls();
  set_patience(default_patience);
}

}  // namespace platform
