// Answers of the parts to one command: each stands in a slot of the record that no parameter uses.
#pragma once

#include "threaded/encode.h"

static_assert(first_answer_slot + max_parts <= cmd_slots);

// The answers in the record that the next append fills, first as if there were no parts. They are valid once a
// synchronous command has returned, until the next append. Issuing thread.
inline const u64* part_answers(const __osw_thread_state* state, u64 without_parts) {
  u64* answers = &begin_cmd(state)->args[first_answer_slot];
  for (i32 part = 0; part < max_parts; ++part) answers[part] = without_parts;
  return answers;
}

// Worker: its part's answer.
inline void answer(const replay_scene& on, u64 value) {
  on.cmd->args[first_answer_slot + static_cast<u32>(on.part)] = value;
}
