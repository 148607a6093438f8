// From a command record to a call: the argument slots at the types of an op's prototype.
#pragma once

#include "pipeline/replay_names.h"

// Carries out one command on one part. The arguments are those of a replay_scene, one by one, so that they stay in
// registers. Result: what the function returned, as a slot.
using replay_case = u64 (*)(__osw_thread_state* state, const __osw_proc* system, i32 part, __osw_cmd* cmd);

template <class Op>
u64 replay_slots(__osw_thread_state*, const __osw_proc* system, i32, __osw_cmd* cmd) {
  return call_with_slots<Op>(cmd->args, entry_in<Op>(system));
}

template <class Op>
u64 replay_own(__osw_thread_state* state, const __osw_proc* system, i32 part, __osw_cmd* cmd) {
  const replay_scene on{state, system, part, cmd};
  return call_with_slots<Op>(cmd->args, [&on](auto... arguments) { return Op::replay(on, arguments...); });
}

template <class Op>
u64 replay_create(__osw_thread_state*, const __osw_proc* system, i32 part, __osw_cmd* cmd) {
  if constexpr (names_of_call<Op>::returns_name) {
    return replay_name<Op>(system, cmd, part);
  } else {
    replay_array_of_names<Op>(system, cmd, part);
    return 0;
  }
}

// The result is the first part's answer, for the other parts have none.
template <class Op>
u64 replay_first(__osw_thread_state*, const __osw_proc* system, i32 part, __osw_cmd* cmd) {
  if (part != 0) return 0;
  const u64 result = call_with_slots<Op>(cmd->args, entry_in<Op>(system));
  cmd->args[first_answer_slot] = result;
  return result;
}

// The case of an op by its row's word; null for one of which there are no commands.
template <class Op>
constexpr replay_case case_of() {
  if constexpr (Op::replaying::value == replay_word::own) {
    return replay_own<Op>;
  } else if constexpr (Op::replaying::value == replay_word::create) {
    return replay_create<Op>;
  } else if constexpr (Op::replaying::value == replay_word::first) {
    return replay_first<Op>;
  } else if constexpr (Op::replaying::value == replay_word::slots) {
    return replay_slots<Op>;
  } else {
    return nullptr;
  }
}
