// Copies of what several pointers of one call name: into the record while there is room, else into blocks that the
// command carries. On the issuing thread.
#pragma once

#include "threaded/encode_blob.h"

struct argument_copies {
  __osw_cmd* cmd;        // that the call will use
  u32 slot;              // where the record has room
  u32 mask = 0;          // of the slots whose arguments are blocks
  bool is_whole = true;  // else there was no memory, and the call has to be dropped
};

template <class Op>
argument_copies begin_copies(const __osw_thread_state* state) {
  return {begin_cmd(state), parameter_count<Op>};
}

// Copies `bytes` of what argument `number` names. Null stays null.
template <class T>
T* copy_argument(argument_copies* copies, u32 number, T* data, u64 bytes, const char* function) {
  if (!data || !copies->is_whole) return nullptr;
  const u64 slots = (bytes + sizeof(u64) - 1) / sizeof(u64);
  if (slots <= cmd_slots - copies->slot) {
    // Nothing is read from an address behind the record.
    if (!slots) return reinterpret_cast<T*>(copies->cmd->args);
    void* copy = put_in_record(copies->cmd, copies->slot, data, bytes);
    copies->slot += static_cast<u32>(slots);
    return static_cast<T*>(copy);
  }
  void* blob = __osw_copy_to_blob(data, bytes, function);
  if (!blob) {
    copies->is_whole = false;
    return nullptr;
  }
  copies->cmd->args[number] = to_slot(blob);
  copies->mask |= 1u << number;
  return static_cast<T*>(blob);
}

// For a call that is dropped: frees the blocks.
inline void drop_copies(const argument_copies& copies) {
  for (u32 rest = copies.mask; rest; rest &= rest - 1) {
    free(from_slot<void*>(copies.cmd->args[__builtin_ctz(rest)]));
  }
}
