// Commands that make names. Behind the parameters of such a record stands where the parts put their names, null when
// the program has got those of its own context; then these follow, or lie in a block.
#pragma once

#include "dispatch/made_names.h"
#include "ops/deletions.h"
#include "pipeline/call_with_slots.h"

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

// The calls that make and delete names as a call of `Op` with the arguments of a record does, in one of a part's
// contexts.
template <class Op>
struct names_of_call {
  using deletion = typename deletion_of<Op::op>::op;
  static constexpr bool returns_name = !std::is_void_v<typename prototype<typename Op::type>::result>;
  // Names that are returned cost a call each, and a program of one shader is compiled.
  static constexpr GLsizei most_more = !returns_name ? 2047 : parameter_count<Op> > 1 ? 3 : 31;

  const __osw_proc* system;
  const u64* args;

  static void make(const void* on, GLsizei count, GLuint* made) {
    const auto* call = static_cast<const names_of_call*>(on);
    typename Op::type* const entry = entry_in<Op>(call->system);
    if constexpr (returns_name) {
      for (GLsizei i = 0; i < count; ++i) made[i] = from_slot<GLuint>(call_with_slots<Op>(call->args, entry));
    } else {
      u64 args[parameter_count<Op>];
      memcpy(args, call->args, sizeof args);
      args[items_slot<Op>] = to_slot(count);
      args[array_slot<Op>] = to_slot(made);
      call_with_slots<Op>(args, entry);
    }
  }

  static void remove(const void* on, GLsizei count, const GLuint* names) {
    auto* const entry = entry_in<deletion>(static_cast<const names_of_call*>(on)->system);
    if constexpr (parameter_count<deletion> == 2) {
      entry(count, names);
    } else {
      for (GLsizei i = 0; i < count; ++i) entry(names[i]);
    }
  }

  name_calls calls() const {
    if constexpr (std::is_same_v<deletion, none_op>) {
      return {this, make, nullptr, 0};
    } else {
      return {this, make, entry_in<deletion>(system) ? remove : nullptr, most_more};
    }
  }
};

// Replays a call that returns a name. The part's goes where the issuing thread takes it, or is made the program's.
template <class Op>
u64 replay_name(const __osw_proc* system, __osw_cmd* cmd, i32 part) {
  const names_of_call<Op> call{system, cmd->args};
  GLuint made = 0;
  call.make(&call, 1, &made);
  if (auto* room = from_slot<GLuint*>(cmd->args[room_slot<Op>])) {
    room[part] = made;
  } else {
    match_names(call.calls(), Op::name, part, names_in(cmd, got_slot<Op>), &made, 1);
  }
  return made;
}

// Replays a call that puts names where a pointer says. What GL refuses to make stays as the program has it.
template <class Op>
void replay_array_of_names(const __osw_proc* system, __osw_cmd* cmd, i32 part) {
  const GLsizei count = from_slot<GLsizei>(cmd->args[items_slot<Op>]);
  const GLuint* got = from_slot<const GLuint*>(cmd->args[array_slot<Op>]);
  GLuint* room = from_slot<GLuint*>(cmd->args[room_slot<Op>]);
  // Nothing to make, or no place for it.
  if (count < 1 || (!got && !room)) {
    call_with_slots<Op>(cmd->args, entry_in<Op>(system));
    return;
  }
  GLuint few[names_in_record<Op>];
  GLuint* made = room ? room + static_cast<u64>(part) * static_cast<u64>(count) : few;
  if (got) memcpy(made, got, static_cast<u64>(count) * sizeof *made);
  const names_of_call<Op> call{system, cmd->args};
  call.make(&call, count, made);
  if (got) match_names(call.calls(), Op::name, part, got, made, count);
}
