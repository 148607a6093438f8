// Heap copies of application memory. A command names its blobs, and the last worker through it frees them.
#pragma once

#include "ops/types.h"

// The bytes of `count` items of `item_size` bytes, or 0 when either is negative or the product does not fit 32 bits:
// then nothing is copied and GL itself refuses the call on the workers.
u64 __osw_checked_bytes(i32 count, u64 item_size);

// Copies `bytes` from `data` into a block of the heap. Null without memory, after a report that names `function`.
void* __osw_copy_to_blob(const void* data, u64 bytes, const char* function);
