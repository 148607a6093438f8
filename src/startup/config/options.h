// The registry options. Read once, at process attach, and constant afterwards: all threads read them without a lock.
#pragma once

#include "ops/types.h"

#define OSW_OPTION(name, ...) extern u32 name;
#include "startup/config/options.inc"
#undef OSW_OPTION

// Sets every option to its default, then to what the registry says. A value that cannot be read leaves the default, and
// nothing is said.
void __osw_read_options();

// Spins while the option `OSW_DW_DeadLoopWhenLoadDll` is set, reading it again and again, so that a developer can
// attach a debugger and release the process by editing the registry. A failed read leaves the last value.
void __osw_debug_spin();
