#include "platform/faults.h"

#include <functional>
#include <map>
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

int call_count(const char* function) {
  const std::lock_guard guard(lock);
  const auto found = orders.find(function);
  return found == orders.end() ? 0 : found->second.calls;
}

bool ordered_to_fail(const char* function) {
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
  orders.clear();
}

}  // namespace platform
