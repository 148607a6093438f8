// Where the entries lead whose prototypes the driver does not know: the host's functions that the op lists lack.
#pragma once

#include "ops/ops.h"

// The first targets are those of the platform library's exports that no header declares.
constexpr int export_thunk_count = 7;
constexpr int thunk_count = 2048;

extern const char* const thunked_exports[export_thunk_count];

// Written by the loading of the host, before any thunk runs, and under the lock of thunk_to. Never emptied.
extern "C" __osw_proc thunk_targets[thunk_count];

// The number of the thunk that leads to `target`, the host's entry for `name`: the same one each time. -1 when all are
// taken, or without memory. Any thread; takes a lock of its own.
int thunk_to(const char* name, __osw_proc target);
