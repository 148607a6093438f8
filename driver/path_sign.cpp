#include "path_sign.h"

#include <atomic>

#include "spread_process.h"

namespace {

// The event is there until the process ends. Without memory for it, tools know less.
void show(const char* sign) {
  CreateEventA(nullptr, TRUE, FALSE, sign_name(sign, GetCurrentProcessId()).text);
}

// Whether this is the first call for the flag.
bool is_first(std::atomic<bool>* flag) {
  return !flag->load(std::memory_order_relaxed) && !flag->exchange(true);
}

}  // namespace

void note_switching() {
  static std::atomic<bool> shown;
  if (is_spread_process() && is_first(&shown)) show(switching_sign);
}

// The library makes the window of a part on the thread that binds the application's context.
void note_drawing_thread(HDC hdc) {
  static std::atomic<bool> shown;
  if (!is_spread_process()) return;
  const DWORD maker = GetWindowThreadProcessId(WindowFromDC(hdc), nullptr);
  if (maker != 0 && maker != GetCurrentThreadId() && is_first(&shown)) show(threads_sign);
}
