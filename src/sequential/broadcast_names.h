// The sequential path's form of what makes names: each part makes its own, and the program gets the last part's.
#pragma once

#include "dispatch/made_names.h"
#include "pipeline/replay_case.h"
#include "sequential/parts/switch.h"

// Makes the names of the other parts those of the last one, which the program gets. The application's own context is
// current afterwards.
template <class Op>
inline void match_parts(const __osw_thread_state* state, const names_of_parts& names, const u64* args) {
  const GLuint* const got = names_for_program(names);
  if (!got) return;
  const names_of_call<Op> call{state->sys_gl, args};
  for (i32 part = 0; part < names.parts - 1; ++part) {
    GLuint* const made = names_of(names, part);
    if (memcmp(made, got, static_cast<u64>(names.count) * sizeof *got) == 0) continue;
    __osw_switch_to_part(state, part);
    match_names(call.calls(), Op::name, part, got, made, names.count);
    __osw_switch_to_app(state);
  }
}

// Names that the call puts where a pointer says.
template <class Op, class... Parameters>
inline void broadcast_array_of_names(const __osw_thread_state* state, typename Op::type* target,
                                     Parameters... arguments) {
  u64 slots[] = {to_slot(arguments)...};
  GLuint* const program = from_slot<GLuint*>(slots[array_slot<Op>]);
  const GLsizei count = from_slot<GLsizei>(slots[items_slot<Op>]);
  if (count < 1 || !program) return __osw_for_each_part(state, [&](i32) { target(arguments...); });
  names_of_parts names;
  if (!open_names(&names, count, __osw_part_count, Op::name)) return;
  __osw_for_each_part(state, [&](i32 part) {
    slots[array_slot<Op>] = to_slot(names_of(names, part));
    call_with_slots<Op>(slots, target);
  });
  match_parts<Op>(state, names, slots);
  give_names(&names, Op::name, program);
}

template <class Op, class... Parameters>
inline GLuint broadcast_name(const __osw_thread_state* state, typename Op::type* target, Parameters... arguments) {
  const u64 slots[parameter_count<Op> + 1] = {to_slot(arguments)...};
  names_of_parts names;
  open_names(&names, 1, __osw_part_count, Op::name);
  __osw_for_each_part(state, [&](i32 part) { *names_of(names, part) = target(arguments...); });
  match_parts<Op>(state, names, slots);
  GLuint name = 0;
  give_names(&names, Op::name, &name);
  return name;
}
