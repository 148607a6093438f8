// Calls that a handler makes as the program would, with all that belongs to them, on either path: a handler which is
// the same on both takes one of these as its `Calls`. It calls `begin` before all but `repeat`. Issuing thread.
#pragma once

#include "sequential/broadcast.h"
#include "threaded/encoders.h"

struct threaded_calls {
  static constexpr bool keeps_pack_store = true;  // in the context's record
  static void begin() {}
  template <class Op, class... Parameters>
  static void call(const __osw_thread_state*, Parameters... arguments) {
    encoder<extended_form<Op>>()(arguments...);
  }
  // What each part does by itself.
  template <class Op, class... Parameters>
  static void repeat(const __osw_thread_state*, Parameters... arguments) {
    encode_plain<Op, void>(arguments...);
  }
  // Lets the context that follows the program see a call which the parts get in another form.
  template <class Op, class... Parameters>
  static void show(const __osw_thread_state* state, Parameters... arguments) {
    mirror<Op>(state, arguments...);
  }
  // Queries, one after the other: `work` is called with a function that makes one.
  template <class Work>
  static void ask(const __osw_thread_state*, Work work) {
    work([]<class Op>(Op, auto... arguments) { encode_query<Op, void>(arguments...); });
  }
};

struct sequential_calls {
  static constexpr bool keeps_pack_store = false;
  // The entry that an alias has named is that of none of the calls that follow.
  static void begin() { __osw_fetch_thread_state()->seq_override = nullptr; }
  template <class Op, class... Parameters>
  static void call(const __osw_thread_state*, Parameters... arguments) {
    broadcaster<extended_form<Op>>()(arguments...);
  }
  template <class Op, class... Parameters>
  static void repeat(const __osw_thread_state*, Parameters... arguments) {
    repeat_on_each_part<Op>(arguments...);
  }
  template <class Op, class... Parameters>
  static void show(const __osw_thread_state*, Parameters...) {}
  // The first part answers.
  template <class Work>
  static void ask(const __osw_thread_state* state, Work work) {
    if (__osw_part_count < 1) return;
    __osw_switch_to_part(state, 0);
    work([state]<class Op>(Op, auto... arguments) { sys_gl<Op>(state)(arguments...); });
    __osw_switch_to_app(state);
  }
};
