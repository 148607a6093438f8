#include "wgl/records/buffer_maps.h"

#include <atomic>
#include <cstdlib>

namespace {

struct node {
  buffer_map map;
  node* next;
};

CRITICAL_SECTION map_lock;
std::atomic<node*> first_map;  // changed under the lock

node* first() {
  return first_map.load(std::memory_order_relaxed);
}

// With the lock held: takes the nodes out for which `is_wanted` holds. Result: their list.
template <class Wanted>
node* unlink(Wanted is_wanted) {
  node* kept = nullptr;
  node* taken = nullptr;
  for (node* at = first(); at;) {
    node* next = at->next;
    node*& list = is_wanted(at->map) ? taken : kept;
    at->next = list;
    list = at;
    at = next;
  }
  first_map.store(kept, std::memory_order_relaxed);
  return taken;
}

void free_nodes(node* at) {
  while (at) {
    node* next = at->next;
    free(at->map.block);
    free(at);
    at = next;
  }
}

template <class Wanted>
void drop(Wanted is_wanted) {
  if (!has_buffer_maps()) return;
  EnterCriticalSection(&map_lock);
  node* dropped = unlink(is_wanted);
  LeaveCriticalSection(&map_lock);
  free_nodes(dropped);
}

}  // namespace

void make_buffer_map_lock() {
  InitializeCriticalSection(&map_lock);
}

void delete_buffer_map_lock() {
  DeleteCriticalSection(&map_lock);
}

bool enter_buffer_map(const buffer_map& map) {
  auto* entered = static_cast<node*>(malloc(sizeof(node)));
  if (!entered) return false;
  EnterCriticalSection(&map_lock);
  node* ended = unlink([&](const buffer_map& other) { return other.home == map.home; });
  *entered = {map, first()};
  first_map.store(entered, std::memory_order_relaxed);
  LeaveCriticalSection(&map_lock);
  free_nodes(ended);
  return true;
}

bool find_buffer_map(const void* home, buffer_map* found) {
  bool is_there = false;
  EnterCriticalSection(&map_lock);
  for (const node* at = first(); at && !is_there; at = at->next) {
    is_there = at->map.home == home;
    if (is_there) *found = at->map;
  }
  LeaveCriticalSection(&map_lock);
  return is_there;
}

bool take_buffer_map(const void* home, buffer_map* taken) {
  EnterCriticalSection(&map_lock);
  node* found = unlink([=](const buffer_map& map) { return map.home == home; });
  LeaveCriticalSection(&map_lock);
  if (!found) return false;
  *taken = found->map;
  free(found);
  return true;
}

bool has_buffer_maps() {
  return first() != nullptr;
}

void drop_buffer_maps(HGLRC hglrc, i32 count, const u32* buffers) {
  for (i32 i = 0; buffers && i < count; ++i) {
    drop([=](const buffer_map& map) { return map.hglrc == hglrc && map.buffer == buffers[i]; });
  }
}

void free_buffer_maps() {
  drop([](const buffer_map&) { return true; });
}
