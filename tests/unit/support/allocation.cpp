#include "support/allocation.h"

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <mutex>
#include <set>

extern "C" {
void* __real_malloc(std::size_t size);
void* __real_calloc(std::size_t count, std::size_t size);
void __real_free(void* block);
}

namespace allocation {

namespace {

thread_local int made = 0;
thread_local int fails_at = 0;
thread_local bool fails_onwards = false;

std::atomic<bool> watched{false};
std::atomic<free_hook> freeing{nullptr};
std::mutex lock;
// Never destroyed: blocks are freed until the very end.
std::set<std::uintptr_t>& live = *new std::set<std::uintptr_t>;
std::vector<std::uintptr_t>& ended = *new std::vector<std::uintptr_t>;

bool ordered_to_fail() {
  ++made;
  if (fails_at == 0) return false;
  return fails_onwards ? made >= fails_at : made == fails_at;
}

void* note(void* block) {
  if (block == nullptr || !watched.load(std::memory_order_relaxed)) return block;
  const std::lock_guard guard(lock);
  live.insert(reinterpret_cast<std::uintptr_t>(block));
  return block;
}

void note_end(const void* block) {
  if (block == nullptr || !watched.load(std::memory_order_relaxed)) return;
  const std::lock_guard guard(lock);
  if (const free_hook run = freeing.load()) run(reinterpret_cast<std::uintptr_t>(block));
  live.erase(reinterpret_cast<std::uintptr_t>(block));
  ended.push_back(reinterpret_cast<std::uintptr_t>(block));
}

}  // namespace

void fail_call(int n, bool onwards) {
  made = 0;
  fails_at = n;
  fails_onwards = onwards;
}

void stop_failing() {
  fail_call(0);
}

int calls() {
  return made;
}

void watch() {
  const std::lock_guard guard(lock);
  live.clear();
  ended.clear();
  watched.store(true);
}

void stop_watching() {
  watched.store(false);
}

int live_blocks() {
  const std::lock_guard guard(lock);
  return static_cast<int>(live.size());
}

bool is_live(std::uintptr_t block) {
  const std::lock_guard guard(lock);
  return live.contains(block);
}

std::vector<std::uintptr_t> freed() {
  const std::lock_guard guard(lock);
  return ended;
}

void before_free(free_hook run) {
  freeing.store(run);
}

}  // namespace allocation

extern "C" {

void* __wrap_malloc(std::size_t size) {
  return allocation::ordered_to_fail() ? nullptr : allocation::note(__real_malloc(size));
}

void* __wrap_calloc(std::size_t count, std::size_t size) {
  return allocation::ordered_to_fail() ? nullptr : allocation::note(__real_calloc(count, size));
}

void __wrap_free(void* block) {
  allocation::note_end(block);
  __real_free(block);
}
}
