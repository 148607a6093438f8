// What all processes that load this file share: whether the application list is in force, and where it is. Read and
// written without a lock: the last writer wins. Zero when the first process loads the library, and gone when the last
// one unloads it.
#pragma once

#include "ops/types.h"

constexpr int list_path_size = 260;

struct __osw_shared_section {
  u32 enable;  // not 0: the application list is in force
  u32 reserved[3];
  char list_path[list_path_size];  // zero-terminated
};

static_assert(offsetof(__osw_shared_section, list_path) == 16);

extern __osw_shared_section __osw_shared;
