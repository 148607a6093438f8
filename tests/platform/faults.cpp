#include "platform/faults.h"

#include <atomic>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

#include "state.h"

namespace platform {

namespace {

struct order {
  int calls = 0;
  int fails_at = 0;  // a count of calls; 0 for none
  bool onwards = false;
  DWORD error = 0;
  int works_at = 0;  // a count of calls; 0 for none
  std::function<void()> work;
};

std::mutex lock;
std::map<std::string, order, std::less<>> orders;
std::shared_ptr<const call_listener> listener;
// Looked at without the lock, which would order the library's threads among each other.
std::atomic<bool> listens{false};

void place(const char* function, int n, bool onwards, DWORD error) {
  const std::lock_guard guard(lock);
  order& entry = orders[function];
  entry.fails_at = entry.calls + n;
  entry.onwards = onwards;
  entry.error = error;
}

// Counts the call. Result: what is to be done before it.
std::function<void()> note_call(order* entry) {
  ++entry->calls;
  if (entry->calls != entry->works_at) return nullptr;
  return std::exchange(entry->work, nullptr);
}

}  // namespace

void fail_call(const char* function, int n, DWORD error) {
  place(function, n, false, error);
}

void fail_calls_from(const char* function, int n, DWORD error) {
  place(function, n, true, error);
}

void stop_failing(const char* function) {
  const std::lock_guard guard(lock);
  orders[function].fails_at = 0;
}

void before_call(const char* function, int n, std::function<void()> work) {
  const std::lock_guard guard(lock);
  order& entry = orders[function];
  entry.works_at = entry.calls + n;
  entry.work = std::move(work);
}

void on_each_call(call_listener work) {
  const std::lock_guard guard(lock);
  listens.store(static_cast<bool>(work), std::memory_order_relaxed);
  listener = work ? std::make_shared<const call_listener>(std::move(work)) : nullptr;
}

void tell_of_call(const char* function, ULONG_PTR object) {
  if (!listens.load(std::memory_order_relaxed)) return;
  std::unique_lock guard(lock);
  const std::shared_ptr<const call_listener> listening = listener;
  guard.unlock();
  if (listening) (*listening)(function, object);
}

int call_count(const char* function) {
  const std::lock_guard guard(lock);
  const auto found = orders.find(function);
  return found == orders.end() ? 0 : found->second.calls;
}

bool ordered_to_fail(const char* function) {
  tell_of_call(function, 0);
  DWORD error = 0;
  {
    std::unique_lock guard(lock);
    const std::function<void()> work = note_call(&orders[function]);
    if (work) {
      guard.unlock();
      work();
      guard.lock();
    }
    const order& entry = orders[function];
    if (entry.fails_at == 0) return false;
    if (entry.onwards ? entry.calls < entry.fails_at : entry.calls != entry.fails_at) return false;
    error = entry.error;
  }
  SetLastError(error);
  return true;
}

void reset_faults() {
  const std::lock_guard guard(lock);
  listens.store(false, std::memory_order_relaxed);
  listener = nullptr;
  orders.clear();
}

}  // namespace platform
