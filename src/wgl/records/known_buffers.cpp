#include "wgl/records/known_buffers.h"

#include <atomic>
#include <cstdlib>
#include <cstring>

#include "ops/buffer_targets.h"

namespace {

// In all. A program that maps more than that is not held up by a wait.
constexpr u64 most_bytes = u64{64} << 20;

constexpr u32 most_buffers = 64;

CRITICAL_SECTION known_lock;

// The rest is under the lock, but for looks at `known_count`.
known_contents known[most_buffers];
std::atomic<u32> known_count;
u64 known_bytes;

// Buffers that were asked for, the latest last; 0 is none.
u32 asked[most_buffers];
u32 asked_turn;

known_contents* find(u32 buffer) {
  const u32 count = known_count.load(std::memory_order_relaxed);
  for (u32 i = 0; i < count; ++i) {
    if (known[i].buffer == buffer) return &known[i];
  }
  return nullptr;
}

known_contents unlink(known_contents* at) {
  const known_contents taken = *at;
  const u32 last = known_count.load(std::memory_order_relaxed) - 1;
  *at = known[last];
  known_count.store(last, std::memory_order_relaxed);
  known_bytes -= taken.size;
  return taken;
}

u32 buffer_of_target(const __osw_thread_state* state, GLenum target) {
  GLint bound = 0;
  if (const GLenum query = binding_query(target)) sys_gl<glGetIntegerv_op>(state)(query, &bound);
  return static_cast<u32>(bound);
}

}  // namespace

void make_known_buffers_lock() {
  InitializeCriticalSection(&known_lock);
  for (u32& buffer : asked) buffer = 0;
}

void delete_known_buffers_lock() {
  DeleteCriticalSection(&known_lock);
}

bool has_known_buffers() {
  return known_count.load(std::memory_order_relaxed) != 0;
}

bool is_worth_knowing(u32 buffer, u64 size) {
  bool again = false;
  EnterCriticalSection(&known_lock);
  for (const u32 other : asked) again |= other == buffer && buffer != 0;
  if (!again) asked[asked_turn++ % most_buffers] = buffer;
  const bool has_room = known_count.load(std::memory_order_relaxed) < most_buffers && size <= most_bytes &&
                        known_bytes <= most_bytes - size;
  LeaveCriticalSection(&known_lock);
  return again && has_room;
}

bool copy_known_contents(u32 buffer, u64 size, GLintptr offset, u64 bytes, u8* to) {
  if (!has_known_buffers()) return false;
  EnterCriticalSection(&known_lock);
  const known_contents* found = find(buffer);
  const bool is_known =
      found && found->size == size && static_cast<u64>(offset) <= size && bytes <= size - static_cast<u64>(offset);
  if (is_known) memcpy(to, found->bytes + offset, bytes);
  LeaveCriticalSection(&known_lock);
  return is_known;
}

void enter_known_contents(const known_contents& contents) {
  forget_known_buffer(contents.buffer);
  EnterCriticalSection(&known_lock);
  const u32 count = known_count.load(std::memory_order_relaxed);
  const bool has_room = count < most_buffers;
  if (has_room) {
    known[count] = contents;
    known_bytes += contents.size;
    known_count.store(count + 1, std::memory_order_relaxed);
  }
  LeaveCriticalSection(&known_lock);
  if (!has_room) free(contents.bytes);
}

bool take_known_contents(u32 buffer, known_contents* taken) {
  if (!has_known_buffers()) return false;
  EnterCriticalSection(&known_lock);
  known_contents* found = find(buffer);
  if (found) *taken = unlink(found);
  LeaveCriticalSection(&known_lock);
  return found != nullptr;
}

void forget_known_buffer(u32 buffer) {
  known_contents taken;
  if (take_known_contents(buffer, &taken)) free(taken.bytes);
}

void forget_known_buffers() {
  if (!has_known_buffers()) return;
  EnterCriticalSection(&known_lock);
  for (u32 i = 0; i < known_count.load(std::memory_order_relaxed); ++i) free(known[i].bytes);
  known_count.store(0, std::memory_order_relaxed);
  known_bytes = 0;
  LeaveCriticalSection(&known_lock);
}

void note_buffer_change(const __osw_thread_state* state, i32 op, const u64* args) {
  switch (op) {
    case glBufferData_op::op:
    case glBufferSubData_op::op:
      return forget_known_buffer(buffer_of_target(state, static_cast<GLenum>(args[0])));
    case glNamedBufferData_op::op:
    case glNamedBufferSubData_op::op:
      return forget_known_buffer(static_cast<u32>(args[0]));
    case glBindBuffer_op::op:
      if (static_cast<GLenum>(args[0]) != GL_PIXEL_PACK_BUFFER || !static_cast<u32>(args[1])) return;
      [[fallthrough]];
    default:
      forget_known_buffers();
  }
}
