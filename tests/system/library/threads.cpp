#include "threads.h"

#include "support/check.h"
#include "window.h"

namespace {

constexpr DWORD patience = 60000;  // ms

// Result: whether it was signalled in time.
bool await(HANDLE object) {
  const DWORD start = GetTickCount();
  while (WaitForSingleObject(object, 0) != WAIT_OBJECT_0) {
    if (GetTickCount() - start > patience) return false;
    pump(5);
  }
  return true;
}

}  // namespace

HANDLE start_thread(DWORD (*body)(void*), void* argument) {
  const HANDLE thread = CreateThread(nullptr, 0, body, argument, 0, nullptr);
  CHECK(thread != nullptr);
  return thread;
}

void join_thread(HANDLE thread) {
  CHECK(await(thread));
  CloseHandle(thread);
}

HANDLE make_event() {
  return CreateEventA(nullptr, FALSE, FALSE, nullptr);
}

void await_event(HANDLE event) {
  CHECK(await(event));
}
