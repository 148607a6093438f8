#include "platform/desktop.h"
#include "platform/process.h"
#include "state.h"

namespace platform {

namespace {

std::mutex lock;
std::vector<timer_facts> current;
UINT_PTR last_id = 0x7F00;

// With the lock held.
timer_facts* find(DWORD thread_id, HWND hwnd, UINT_PTR id) {
  for (timer_facts& timer : current) {
    if (timer.thread_id == thread_id && timer.hwnd == hwnd && timer.id == id) return &timer;
  }
  return nullptr;
}

bool still_set(const timer_facts& timer) {
  const std::lock_guard guard(lock);
  return find(timer.thread_id, timer.hwnd, timer.id) != nullptr;
}

}  // namespace

std::vector<timer_facts> timers() {
  const std::lock_guard guard(lock);
  return current;
}

int run_timers() {
  const DWORD me = GetCurrentThreadId();
  int count = 0;
  for (const timer_facts& timer : timers()) {
    // One of the callbacks before may have removed it.
    if (timer.thread_id != me || !still_set(timer)) continue;
    timer.procedure(timer.hwnd, WM_TIMER, timer.id, 0);
    ++count;
  }
  return count;
}

void forget_thread_timers(DWORD thread_id) {
  const std::lock_guard guard(lock);
  std::erase_if(current, [&](const timer_facts& timer) { return timer.thread_id == thread_id; });
}

void reset_timers() {
  const std::lock_guard guard(lock);
  current.clear();
}

}  // namespace platform

using namespace platform;

extern "C" UINT_PTR SetTimer(HWND hwnd, UINT_PTR id, UINT milliseconds, TIMERPROC procedure) {
  if (hwnd != nullptr || procedure == nullptr) misuse("SetTimer with a window or without a procedure");
  if (ordered_to_fail("SetTimer")) return 0;
  const DWORD me = GetCurrentThreadId();
  const std::lock_guard guard(lock);
  if (timer_facts* timer = find(me, nullptr, id)) {
    timer->milliseconds = milliseconds;
    timer->procedure = procedure;
    return id;
  }
  current.push_back({me, nullptr, ++last_id, milliseconds, procedure});
  return last_id;
}

extern "C" BOOL KillTimer(HWND hwnd, UINT_PTR id) {
  if (ordered_to_fail("KillTimer")) return FALSE;
  const DWORD me = GetCurrentThreadId();
  const std::lock_guard guard(lock);
  return std::erase_if(current, [&](const timer_facts& timer) {
           return timer.thread_id == me && timer.hwnd == hwnd && timer.id == id;
         }) > 0;
}
