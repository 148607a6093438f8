// The options, from the registry and, for one process, its environment. Read once, at process attach, and constant
// afterwards: all threads read them without a lock.
#pragma once

#include "ops/types.h"

#define OSW_OPTION(name, ...) extern u32 name;
#include "startup/config/options.inc"
#undef OSW_OPTION

// Sets every option to its default, then to what the registry says, then to what an environment variable of its name
// says. A value that cannot be read leaves the default, and nothing is said. A variable is a decimal number of 32 bits;
// an empty one counts as not set, and any other is reported and leaves what the registry says.
void __osw_read_options();

// Reads what an environment variable says of an option. Result: whether it says something; one that is no number does
// not, and is reported.
bool read_option_variable(const char* name, u32* value);

// Spins while the option `OSW_DW_DeadLoopWhenLoadDll` is set, reading it again and again, so that a developer can
// attach a debugger and release the process by editing the registry. A failed read leaves the last value. A process
// that waits because its environment says so reads nothing again: only the debugger, by setting the variable, lets it
// go.
void __osw_debug_spin();
