// The registry options. Read once, at process attach, and constant afterwards: all threads read them without a lock.
#pragma once

#include "ops/types.h"

extern u32 OSW_DW_DeadLoopWhenLoadDll;
extern u32 OSW_DW_FakeAsOneMonitor;
extern u32 OSW_DW_SplitOneMonitor;
extern u32 OSW_DW_SplitParts;
extern u32 OSW_DW_SplitTwoPartsHorizontal;
extern u32 OSW_DW_UseSplitParentMethod;
extern u32 OSW_DW_ForceUnusedChildWindowSize1X1;
extern u32 OSW_DW_GLDispatchUseMtPath;
extern u32 OSW_DW_UseAppThreadToQueryState;

// Sets every option to its default, then to what the registry says. A value that cannot be read leaves the default, and
// nothing is said.
void __osw_read_options();

// Spins while the option `OSW_DW_DeadLoopWhenLoadDll` is set, reading it again and again, so that a developer can
// attach a debugger and release the process by editing the registry. A failed read leaves the last value.
void __osw_debug_spin();
