// A call of each wgl entry point with arguments that can be told from each other.
#pragma once

#include "support/library.h"

struct wgl_sample {
  const char* name;
  int op;
  int forwarded_to;    // the system's entry in a bypassed process; -1 for none
  int active_target;   // the same in an active process; -2 where the wrapper does work of its own
  bool warns;          // in an active process, before it forwards
  u64 (*call)();       // of the entry point; the bits of its result, 0 for none
  driver::call noted;  // what the driver notes of that call, forwarded to its own op
  u64 result_mask;     // the bits that a result has
};

const std::array<wgl_sample, wgl_op_count>& wgl_samples();
