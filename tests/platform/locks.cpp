// Critical sections and condition variables, on the host's own, so that ThreadSanitizer sees what they order.
#include <cerrno>
#include <ctime>

#include "platform/process.h"
#include "state.h"

namespace platform {

namespace {

constexpr DWORD in_use = 0x5EC7100Du;
constexpr DWORD deleted = 0xDE1E7EDu;

std::atomic<int> live_sections{0};
std::atomic<int> most_held{0};
std::atomic<int> spurious_every{0};
std::atomic<int> sleeps{0};
std::atomic<enter_hook> entering{nullptr};

void check(const CRITICAL_SECTION* section, const char* call) {
  if (section->state != in_use) misuse(call);
}

void count_entered() {
  const int held = ++self().locks_held;
  int most = most_held.load(std::memory_order_relaxed);
  while (held > most && !most_held.compare_exchange_weak(most, held, std::memory_order_relaxed)) {
  }
}

thread_record* owner_of(const CRITICAL_SECTION* section) {
  return static_cast<thread_record*>(__atomic_load_n(&section->owner, __ATOMIC_ACQUIRE));
}

void set_owner(CRITICAL_SECTION* section, thread_record* owner, int entries) {
  __atomic_store_n(&section->owner, owner, __ATOMIC_RELEASE);
  section->entries = entries;
}

// Whether a thread was killed within it, which nobody will ever leave.
bool is_orphan(const CRITICAL_SECTION* section) {
  const thread_record* owner = owner_of(section);
  return owner != nullptr && owner->killed.load() && owner->ended.load();
}

bool try_acquire(CRITICAL_SECTION* section) {
  if (pthread_mutex_trylock(&section->mutex) != 0) return false;
  set_owner(section, &self(), section->entries + 1);
  return true;
}

void acquire(CRITICAL_SECTION* section) {
  if (try_acquire(section)) return;
  if (is_orphan(section)) misuse("EnterCriticalSection of a section in which a thread was killed");
  const blocked_scope blocked("EnterCriticalSection");
  pthread_mutex_lock(&section->mutex);
  set_owner(section, &self(), section->entries + 1);
}

// A thread that has left a section may be killed, and the section goes on without it.
void leave(CRITICAL_SECTION* section) {
  thread_record& me = self();
  if (owner_of(section) != &me) misuse("LeaveCriticalSection by a thread that is not in it");
  --me.locks_held;
  const int entries = section->entries - 1;
  set_owner(section, entries == 0 ? nullptr : &me, entries);
  pthread_mutex_unlock(&section->mutex);
}

timespec from_now(DWORD milliseconds) {
  timespec time;
  clock_gettime(CLOCK_REALTIME, &time);
  time.tv_sec += milliseconds / 1000;
  time.tv_nsec += static_cast<long>(milliseconds % 1000) * 1000000;
  if (time.tv_nsec >= 1000000000) {
    time.tv_nsec -= 1000000000;
    ++time.tv_sec;
  }
  return time;
}

bool wakes_by_itself() {
  const int every = spurious_every.load(std::memory_order_relaxed);
  return every != 0 && sleeps.fetch_add(1, std::memory_order_relaxed) % every == every - 1;
}

void set_sleeping(thread_record& thread, pthread_cond_t* condition) {
  const std::lock_guard guard(thread.sleep_lock);
  thread.sleeping_on = condition;
}

int sleep(CONDITION_VARIABLE* condition, CRITICAL_SECTION* section, DWORD milliseconds) {
  const blocked_scope blocked("SleepConditionVariableCS");
  if (milliseconds == INFINITE) return pthread_cond_wait(&condition->condition, &section->mutex);
  const timespec until = from_now(milliseconds);
  return pthread_cond_timedwait(&condition->condition, &section->mutex, &until);
}

}  // namespace

int locks_held() {
  return self().locks_held;
}

int most_locks_held() {
  return most_held.load(std::memory_order_relaxed);
}

int live_critical_sections() {
  return live_sections.load();
}

void set_spurious_wakes(int n) {
  sleeps.store(0);
  spurious_every.store(n);
}

void before_entering(enter_hook run) {
  entering.store(run, std::memory_order_release);
}

void reset_locks() {
  before_entering(nullptr);
  set_spurious_wakes(0);
  most_held.store(0);
  live_sections.store(0);
}

}  // namespace platform

using namespace platform;

extern "C" void InitializeCriticalSection(LPCRITICAL_SECTION section) {
  tell_of_call("InitializeCriticalSection", reinterpret_cast<ULONG_PTR>(section));
  pthread_mutexattr_t attributes;
  pthread_mutexattr_init(&attributes);
  pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
  pthread_mutex_init(&section->mutex, &attributes);
  pthread_mutexattr_destroy(&attributes);
  section->state = in_use;
  set_owner(section, nullptr, 0);
  live_sections.fetch_add(1);
}

extern "C" void DeleteCriticalSection(LPCRITICAL_SECTION section) {
  tell_of_call("DeleteCriticalSection", reinterpret_cast<ULONG_PTR>(section));
  check(section, "DeleteCriticalSection of a section that is not in use");
  if (!is_orphan(section) && pthread_mutex_destroy(&section->mutex) != 0)
    misuse("DeleteCriticalSection of a section that a thread is in");
  section->state = deleted;
  live_sections.fetch_sub(1);
}

extern "C" void EnterCriticalSection(LPCRITICAL_SECTION section) {
  check(section, "EnterCriticalSection of a section that is not in use");
  kill_point();
  if (const enter_hook run = entering.load(std::memory_order_acquire)) run(section);
  acquire(section);
  count_entered();
}

extern "C" BOOL TryEnterCriticalSection(LPCRITICAL_SECTION section) {
  check(section, "TryEnterCriticalSection of a section that is not in use");
  kill_point();
  if (!try_acquire(section)) return FALSE;
  count_entered();
  return TRUE;
}

extern "C" void LeaveCriticalSection(LPCRITICAL_SECTION section) {
  check(section, "LeaveCriticalSection of a section that is not in use");
  leave(section);
}

extern "C" void InitializeConditionVariable(PCONDITION_VARIABLE condition) {
  pthread_cond_init(&condition->condition, nullptr);
}

extern "C" BOOL SleepConditionVariableCS(PCONDITION_VARIABLE condition, PCRITICAL_SECTION section, DWORD milliseconds) {
  check(section, "SleepConditionVariableCS with a section that is not in use");
  thread_record& me = self();
  if (me.locks_held == 0) misuse("SleepConditionVariableCS by a thread that is in no section");
  if (owner_of(section) != &me) misuse("SleepConditionVariableCS by a thread that is not in the section");
  if (section->entries != 1) misuse("SleepConditionVariableCS in a section entered twice");
  if (wakes_by_itself()) {
    set_owner(section, nullptr, 0);
    pthread_mutex_unlock(&section->mutex);
    acquire(section);
    return TRUE;
  }
  set_sleeping(me, &condition->condition);
  set_owner(section, nullptr, 0);
  const int result = me.killed.load() ? 0 : sleep(condition, section, milliseconds);
  set_owner(section, &me, 1);
  set_sleeping(me, nullptr);
  if (me.killed.load()) {
    leave(section);
    throw thread_killed{};
  }
  if (result != ETIMEDOUT) return TRUE;
  SetLastError(ERROR_TIMEOUT);
  return FALSE;
}

extern "C" void WakeConditionVariable(PCONDITION_VARIABLE condition) {
  pthread_cond_signal(&condition->condition);
}

extern "C" void WakeAllConditionVariable(PCONDITION_VARIABLE condition) {
  pthread_cond_broadcast(&condition->condition);
}
