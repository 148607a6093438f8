// Reads of what is whole on every part, which the first one answers: with what was drawn into it, too, of which the
// application's own context knows nothing. That context is called as well, for the errors.
#pragma once

#include "threaded/encode.h"
#include "wgl/records/glrc.h"

// Behind the parameters: whether each part reads, which is so into a pack buffer, for each has its own.
template <class Op>
constexpr u32 everyone_slot = parameter_count<Op>;

template <class Op, class... Parameters>
void encode_read(Parameters... arguments) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  mirror<Op>(state, arguments...);
  begin_cmd(state)->args[everyone_slot<Op>] = state->glrc->client_state.pack_buffer != 0;
  push<Op>(state, arguments...);
}

template <class Op, class... Parameters>
void replay_read(const replay_scene& on, Parameters... arguments) {
  if (on.part == 0 || on.cmd->args[everyone_slot<Op>]) entry_in<Op>(on.system)(arguments...);
}
