// The measured calls, each with a loop around it.
#pragma once

#include "settings.h"

struct measured_call {
  const char* label;
  int op;
  const char* name;
  const setting* around;
  int burst;           // 0 for a stream
  bool needs_answers;  // of the driver: one that does nothing tells nothing about it
  // Makes `count` calls of `entry`, which is of the op, or does that often what the op begins.
  void (*repeat)(__osw_proc entry, u64 count, setting_memory* memory);
};

extern const measured_call measured_calls[];
extern const int measured_call_count;

// The same loop around nothing.
void repeat_nothing(u64 count);

// Waits until every part has done what was called before, in whatever way the calls go.
void wait_for_parts(const route& through);
