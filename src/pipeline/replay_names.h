// Commands that make names. Behind the parameters of such a record stands where the parts put their names, null when
// the program has got those of its own context; then these follow, or lie in a block.
#pragma once

#include "dispatch/made_names.h"
#include "ops/ops.h"
#include "pipeline/cmd.h"

template <class Op>
constexpr u32 room_slot = parameter_count<Op>;
template <class Op>
constexpr u32 got_slot = room_slot<Op> + 1;

// How many names there is room for behind the others.
template <class Op>
constexpr GLsizei names_in_record = (cmd_slots - static_cast<int>(got_slot<Op>)) * 2;

inline GLuint* names_in(__osw_cmd* cmd, u32 slot) {
  return reinterpret_cast<GLuint*>(&cmd->args[slot]);
}

// Replays a call that returns a name. The part's goes where the issuing thread takes it, or is compared.
template <class Op, class Call>
u64 replay_name(__osw_cmd* cmd, i32 part, Call call) {
  const GLuint made = call();
  if (auto* room = from_slot<GLuint*>(cmd->args[room_slot<Op>])) {
    room[part] = made;
  } else {
    compare_names(Op::name, part, names_in(cmd, got_slot<Op>), &made, 1);
  }
  return made;
}

// Replays a call that puts names where a pointer says: `call` has the address to put them at, null where the record's
// own is right, because there is nothing to make or no place for it. What GL refuses to make stays as the program has
// it.
template <class Op, class Call>
void replay_array_of_names(__osw_cmd* cmd, i32 part, Call call) {
  const GLsizei count = from_slot<GLsizei>(cmd->args[items_slot<Op>]);
  const GLuint* got = from_slot<const GLuint*>(cmd->args[array_slot<Op>]);
  GLuint* room = from_slot<GLuint*>(cmd->args[room_slot<Op>]);
  if (count < 1 || (!got && !room)) return call(nullptr);
  GLuint few[names_in_record<Op>];
  GLuint* made = room ? room + static_cast<u64>(part) * static_cast<u64>(count) : few;
  if (got) memcpy(made, got, static_cast<u64>(count) * sizeof *made);
  call(made);
  if (got) compare_names(Op::name, part, got, made, count);
}
