// Entries for functions whose prototypes the driver does not know. Each makes the calling thread's binding real, as
// every entry of the driver does, and then jumps to the host with all arguments untouched, or returns 0 if the binding
// is refused.
#pragma once

#include "ops/ops.h"

// The thunk that leads to `target`, the host's entry for `name`: the same one each time. Null, with a report, when all
// are taken. Any thread; takes a lock.
__osw_proc thunk_for(const char* name, __osw_proc target);
