// Entries for functions whose prototypes the driver does not know. Each makes the calling thread's binding real, as
// every entry of the driver does, and then jumps to the host with all arguments untouched.
#pragma once

#include "ops/ops.h"

// The first thunks are the platform library's exports that no header declares.
constexpr int export_thunk_count = 7;
constexpr int thunk_count = 2048;

extern const char* const thunked_exports[export_thunk_count];

// Where each thunk leads. Written under the lock of thunk_for, and by the loading of the host before any thunk runs.
extern "C" __osw_proc thunk_targets[thunk_count];

// The thunk that leads to `target`, the host's entry for `name`: the same one each time. Null, with a report, when all
// are taken. Any thread; takes a lock of its own.
__osw_proc thunk_for(const char* name, __osw_proc target);
