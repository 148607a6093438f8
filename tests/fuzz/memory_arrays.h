// Arrays of the first array object that lie in the program's memory: they have all that a draw reads of them, and not a
// byte more.
#pragma once

#include "wide_stream.h"

namespace fuzz {

struct drawn_range {
  u64 first, end;  // vertices
  u64 instances = 1;
  u64 base_instance = 0;
};

void settle_arrays(stream* run, const drawn_range& drawn);

// The first object with a few arrays, which lie in memory when they are drawn: draws of it are captured.
void begin_anew(stream* run);

// What the program does with the memory after a draw.
void ruin_memory(stream* run);

}  // namespace fuzz
