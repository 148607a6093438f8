// The command record: the hand-over format between an issuing thread and the workers of its parts.
#pragma once

#include <cstring>
#include <type_traits>

#include "ops/relaxed.h"
#include "ops/types.h"

constexpr int cmd_slots = 32;

// Behind the arguments of a synchronous command that has answers, one slot for that of each part.
constexpr u32 first_answer_slot = 16;

// Values of `type`.
constexpr u32 __osw_cmd_wgl = 1;
constexpr u32 __osw_cmd_gl = 2;
constexpr u32 cmd_sync = 3;        // no op: as the last record of a list it releases the issuing thread
constexpr u32 __osw_cmd_exit = 4;  // no op: as the last record of a list it ends the worker

// Records of types 3 and 4 have only their type written. A record does not move until its list has been replayed, so an
// encoder may keep a small payload in the slots behind the arguments and pass that slot's address.
struct __osw_cmd {
  u32 type;
  i32 op;                  // in the op space that `type` names
  u64 result;              // of the replay, type 2 only; stored by every worker, relaxed
  u32 arg_count;           // slots that the encoder filled; replay does not read it
  u64 args[cmd_slots];     // one argument each, as raw bits
  u32 blob_mask;           // bit i: args[i] is a heap block captured for this command
  u32 blob_release_count;  // workers that have finished a command with blobs; atomic
};

static_assert(offsetof(__osw_cmd, op) == 4 && offsetof(__osw_cmd, result) == 8 && offsetof(__osw_cmd, arg_count) == 16);
static_assert(offsetof(__osw_cmd, args) == 24 && offsetof(__osw_cmd, blob_mask) == 280);
static_assert(offsetof(__osw_cmd, blob_release_count) == 284 && sizeof(__osw_cmd) == 288);

// An argument's bits in a slot: integers extended by their own sign, floats as their pattern, pointers whole.
template <class T>
inline u64 to_slot(T value) {
  if constexpr (std::is_pointer_v<T>) {
    return reinterpret_cast<u64>(value);
  } else if constexpr (std::is_floating_point_v<T>) {
    u64 slot = 0;
    memcpy(&slot, &value, sizeof value);
    return slot;
  } else {
    static_assert(std::is_integral_v<T>);
    return static_cast<u64>(static_cast<int64_t>(value));
  }
}

// The argument that a slot holds, of which only the type's own width is read. Another part's result may land meanwhile
// in the slot of a pointer (glGetQueryObjectui64v), whose replay does not use what was there.
template <class T>
inline T from_slot(const u64& slot) {
  if constexpr (std::is_pointer_v<T>) {
    return reinterpret_cast<T>(relaxed_load(slot));
  } else {
    T value;
    memcpy(&value, &slot, sizeof value);
    return value;
  }
}
