// Heap copies of application memory. A command names its blobs, and the last worker through it frees them.
#pragma once

#include "ops/types.h"

// Copies `bytes` from `data` into a block of the heap. Null without memory, after a report that names `function`.
void* __osw_copy_to_blob(const void* data, u64 bytes, const char* function);
