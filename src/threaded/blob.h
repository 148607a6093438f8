// Heap copies of application memory. A command names its blobs, and the last worker through it frees them.
#pragma once

#include "ops/types.h"

// Makes a block of the heap. Null without memory, and for `too_many_bytes`, after a report that names `function`.
void* make_blob(u64 bytes, const char* function);

// Copies `bytes` from `data` into a block of the heap. Null without memory, and for `too_many_bytes`, after a report
// that names `function`.
void* __osw_copy_to_blob(const void* data, u64 bytes, const char* function);

// The same for a block of `reached` bytes, of which the application has not said that it has more than the first
// `told`. What lies beyond those is copied as far as the process may read it, and else zero.
void* copy_reached_to_blob(const void* data, u64 told, u64 reached, const char* function);
