// Whether this process is bypassed.
#pragma once

#include "ops/types.h"

// 1: the process uses the pass-through tables. Decided at process attach and only read afterwards.
extern u32 __osw_enable_wrapper_bypass;
