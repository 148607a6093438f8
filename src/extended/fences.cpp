#include "extended/fences.h"

#include <cstdlib>

#include "startup/config/monitors.h"

namespace {

struct fence_record {
  GLsync app;
  GLsync part[max_parts];
  u32 generation;  // of those that have had this place; the handle's must be the same
  u32 is_used;
  u32 is_forgotten;  // by the program
  u32 made;          // a bit per part that has made its sync object
  u32 dropped;       // a bit per part that has taken the deletion
};

// A block of records stays until the process ends.
constexpr u32 block_size = 64;
constexpr u32 block_count = 256;
constexpr u32 most_fences = block_size * block_count;

CRITICAL_SECTION fence_lock;
CONDITION_VARIABLE fence_made;
fence_record* blocks[block_count];
u32 next_place;  // where the search for a free one begins

// A handle is a record's generation and, behind it, its place counted from 1.
constexpr u32 place_bits = 16;
static_assert(most_fences < 1u << place_bits);

GLsync handle_of(u32 place, u32 generation) {
  return reinterpret_cast<GLsync>(u64{generation} << place_bits | (place + 1));
}

// With the lock held. Null for what is no fence.
fence_record* find(GLsync fence) {
  const auto bits = reinterpret_cast<u64>(fence);
  const u64 place = (bits & ((u64{1} << place_bits) - 1)) - 1;
  if (place >= most_fences || !blocks[place / block_size]) return nullptr;
  fence_record* record = &blocks[place / block_size][place % block_size];
  return record->is_used && record->generation == bits >> place_bits ? record : nullptr;
}

u32 all_parts() {
  return (1u << __osw_part_count) - 1;
}

// With the lock held: a fence that no part will ask for any more leaves its place.
void leave_if_done(fence_record* record) {
  if ((record->made & record->dropped) == all_parts()) record->is_used = 0;
}

// With the lock held. Null when all blocks that there are, are full; `*missing` is then where a new one belongs, or
// null.
fence_record* find_free(u32* place, fence_record*** missing) {
  *missing = nullptr;
  for (u32 i = 0; i < most_fences; ++i) {
    const u32 at = (next_place + i) % most_fences;
    fence_record*& block = blocks[at / block_size];
    if (!block) {
      if (!*missing) *missing = &block;
      i += block_size - at % block_size - 1;
      continue;
    }
    if (block[at % block_size].is_used) continue;
    *place = at;
    return &block[at % block_size];
  }
  return nullptr;
}

// With the lock held.
GLsync enter(fence_record* record, u32 place, GLsync app) {
  const u32 generation = record->generation + 1;
  *record = {.app = app, .generation = generation, .is_used = 1};
  next_place = place + 1;
  return handle_of(place, generation);
}

// The new fence, or null when all blocks are full. A block that is missing is then taken from `*spare`, if that has
// one;
// `*is_full` says that none can be missing.
GLsync try_to_enter(GLsync app, fence_record** spare, bool* is_full) {
  u32 place = 0;
  fence_record** missing = nullptr;
  GLsync made = nullptr;
  EnterCriticalSection(&fence_lock);
  if (fence_record* record = find_free(&place, &missing)) {
    made = enter(record, place, app);
  } else if (missing && *spare) {
    *missing = *spare;
    *spare = nullptr;
    made = enter(*missing, static_cast<u32>(missing - blocks) * block_size, app);
  }
  *is_full = !missing;
  LeaveCriticalSection(&fence_lock);
  return made;
}

}  // namespace

void make_fence_lock() {
  InitializeCriticalSection(&fence_lock);
  InitializeConditionVariable(&fence_made);
}

void delete_fence_lock() {
  DeleteCriticalSection(&fence_lock);
}

GLsync enter_fence(GLsync app) {
  fence_record* spare = nullptr;
  bool is_full = false;
  GLsync made = try_to_enter(app, &spare, &is_full);
  if (!made && !is_full) {
    // Nothing is allocated under the lock. Meanwhile another thread may have brought a block.
    spare = static_cast<fence_record*>(calloc(block_size, sizeof(fence_record)));
    if (spare) made = try_to_enter(app, &spare, &is_full);
  }
  free(spare);
  return made;
}

bool is_fence(GLsync fence) {
  EnterCriticalSection(&fence_lock);
  const fence_record* record = find(fence);
  const bool is_known = record && !record->is_forgotten;
  LeaveCriticalSection(&fence_lock);
  return is_known;
}

GLsync app_fence(GLsync fence) {
  EnterCriticalSection(&fence_lock);
  const fence_record* record = find(fence);
  GLsync app = record && !record->is_forgotten ? record->app : nullptr;
  LeaveCriticalSection(&fence_lock);
  return app;
}

bool forget_fence(GLsync fence, GLsync* app) {
  EnterCriticalSection(&fence_lock);
  fence_record* record = find(fence);
  const bool is_known = record && !record->is_forgotten;
  if (is_known) {
    *app = record->app;
    record->is_forgotten = 1;
    if (!all_parts()) record->is_used = 0;
  }
  LeaveCriticalSection(&fence_lock);
  return is_known;
}

bool keep_part_fence(GLsync fence, i32 part, GLsync own) {
  bool is_kept = false;
  EnterCriticalSection(&fence_lock);
  if (fence_record* record = find(fence)) {
    const u32 bit = 1u << part;
    is_kept = !(record->dropped & bit);
    record->made |= bit;
    record->part[part] = own;
    leave_if_done(record);
  }
  LeaveCriticalSection(&fence_lock);
  WakeAllConditionVariable(&fence_made);
  return is_kept;
}

fence_search find_part_fence(GLsync fence, i32 part, DWORD milliseconds, GLsync* own) {
  const u32 bit = 1u << part;
  bool is_late = false;
  EnterCriticalSection(&fence_lock);
  const fence_record* record = find(fence);
  while (record && !(record->made & bit) && !is_late) {
    is_late = !SleepConditionVariableCS(&fence_made, &fence_lock, milliseconds);
    record = find(fence);
  }
  const bool is_there = record && !(record->dropped & bit);
  const bool is_made = is_there && record->made & bit;
  if (is_made) *own = record->part[part];
  LeaveCriticalSection(&fence_lock);
  if (!is_there) return fence_search::unknown;
  return is_made ? fence_search::made : fence_search::not_made;
}

fence_search take_part_fence(GLsync fence, i32 part, GLsync* own) {
  const u32 bit = 1u << part;
  fence_search found = fence_search::unknown;
  EnterCriticalSection(&fence_lock);
  fence_record* record = find(fence);
  if (record && !(record->dropped & bit)) {
    record->dropped |= bit;
    found = record->made & bit ? fence_search::made : fence_search::not_made;
    *own = record->part[part];
    leave_if_done(record);
  }
  LeaveCriticalSection(&fence_lock);
  return found;
}
