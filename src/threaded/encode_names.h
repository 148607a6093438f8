// The encoder of what makes names. The program gets those of its own context, which travel in the command, so that the
// parts make theirs without a wait; when that context does not follow, the parts are waited for.
#pragma once

#include <cstdlib>

#include "pipeline/replay_names.h"
#include "startup/config/monitors.h"
#include "threaded/blob.h"
#include "threaded/encode.h"

// Appends the command with a block for the names that the program got, and one for those of each part. Without memory
// the call is dropped on all parts alike.
template <class Op, u32 count>
inline void push_many_names(__osw_thread_state* state, const GLuint* got, GLsizei items, u64 (&slots)[count]) {
  // The program has not said that it has so many: GL may have refused the call.
  void* copy = copy_reached_to_blob(got, 0, __osw_checked_bytes(items, sizeof *got), Op::name);
  if (!copy) return;
  const u64 room = static_cast<u64>(__osw_part_count) * sizeof *got;
  void* made = make_blob(__osw_checked_bytes(items, room), Op::name);
  if (!made) return free(copy);
  slots[array_slot<Op>] = to_slot(copy);
  begin_cmd(state)->args[room_slot<Op>] = to_slot(made);
  __osw_push_gl_cmd(state, Op::op, count, slots, 1u << array_slot<Op> | 1u << room_slot<Op>);
}

// Appends the command with the names that the program got.
template <class Op, u32 count>
inline void push_names(__osw_thread_state* state, const GLuint* got, GLsizei items, u64 (&slots)[count]) {
  if (items > names_in_record<Op>) return push_many_names<Op>(state, got, items, slots);
  __osw_cmd* cmd = begin_cmd(state);
  memcpy(names_in(cmd, got_slot<Op>), got, static_cast<u64>(items) * sizeof *got);
  cmd->args[room_slot<Op>] = 0;
  slots[array_slot<Op>] = to_slot(names_in(cmd, got_slot<Op>));
  __osw_push_gl_cmd(state, Op::op, count, slots, 0);
}

// Appends the command, waits for the parts, and gives the program what the last one has made.
template <class Op, u32 count>
inline void push_and_take_names(__osw_thread_state* state, GLuint* program, GLsizei items, u64 (&slots)[count]) {
  names_of_parts names;
  if (!open_names(&names, items, __osw_part_count, Op::name)) return;
  slots[array_slot<Op>] = 0;
  begin_cmd(state)->args[room_slot<Op>] = to_slot(names.of_part);
  __osw_push_gl_cmd(state, Op::op, count, slots, 0);
  __osw_send_sync_cmd(state);
  give_names(&names, Op::name, program);
}

// Names that the call puts where a pointer says. With nothing to make, or no place for it, nothing is compared.
template <class Op, class... Parameters>
inline void encode_array_of_names(__osw_thread_state* state, Parameters... arguments) {
  u64 slots[] = {to_slot(arguments)...};
  GLuint* const program = from_slot<GLuint*>(slots[array_slot<Op>]);
  const GLsizei items = from_slot<GLsizei>(slots[items_slot<Op>]);
  mirror<Op>(state, arguments...);
  if (items > 0 && program) {
    if (mirrors()) return push_names<Op>(state, program, items, slots);
    return push_and_take_names<Op>(state, program, items, slots);
  }
  begin_cmd(state)->args[room_slot<Op>] = 0;
  __osw_push_gl_cmd(state, Op::op, sizeof...(Parameters), slots, 0);
}

// A name that the call returns. `push_call` appends the command, of which the slots behind the parameters are filled.
template <class Op, class Push, class... Parameters>
inline GLuint encode_name(__osw_thread_state* state, Push push_call, Parameters... arguments) {
  GLuint name = 0;
  if (mirrors()) {
    name = sys_gl<Op>(state)(arguments...);
    __osw_cmd* cmd = begin_cmd(state);
    cmd->args[room_slot<Op>] = 0;
    cmd->args[got_slot<Op>] = to_slot(name);
    push_call();
    return name;
  }
  names_of_parts names;
  open_names(&names, 1, __osw_part_count, Op::name);
  begin_cmd(state)->args[room_slot<Op>] = to_slot(names.of_part);
  push_call();
  __osw_send_sync_cmd(state);
  give_names(&names, Op::name, &name);
  return name;
}

template <class Op, class Result, class... Parameters>
Result encode_names(Parameters... arguments) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  if constexpr (std::is_void_v<Result>) {
    encode_array_of_names<Op>(state, arguments...);
  } else {
    return encode_name<Op>(
        state, [=] { push<Op>(state, arguments...); }, arguments...);
  }
}
