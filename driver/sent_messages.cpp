#include "sent_messages.h"

#include <atomic>
#include <cstdlib>

namespace {

struct watched_thread {
  watched_thread* next;
  DWORD id;
  HHOOK hook;
};

// Under `threads_lock`. A thread that ended is kept: its number may be another's one day.
watched_thread* threads;
SRWLOCK threads_lock = SRWLOCK_INIT;
std::atomic<void (*)(const CWPSTRUCT&)> tell;

LRESULT CALLBACK receive(int code, WPARAM first, LPARAM second) {
  if (code == HC_ACTION) tell.load()(*reinterpret_cast<const CWPSTRUCT*>(second));
  return CallNextHookEx(nullptr, code, first, second);
}

watched_thread* find_or_add(DWORD id) {
  for (watched_thread* t = threads; t; t = t->next) {
    if (t->id == id) return t;
  }
  auto* added = static_cast<watched_thread*>(calloc(1, sizeof(watched_thread)));
  if (!added) return nullptr;
  *added = {threads, id, nullptr};
  return threads = added;
}

}  // namespace

bool watch_sent_messages(DWORD thread, void (*told)(const CWPSTRUCT& sent)) {
  tell = told;
  AcquireSRWLockExclusive(&threads_lock);
  watched_thread* t = find_or_add(thread);
  if (t) {
    if (t->hook) UnhookWindowsHookEx(t->hook);
    t->hook = SetWindowsHookExA(WH_CALLWNDPROC, receive, nullptr, thread);
  }
  const bool watched = t && t->hook;
  ReleaseSRWLockExclusive(&threads_lock);
  return watched;
}
