// The shared section of the wrapper's stand-in.
#pragma once

struct standin_state {
  int enable_count, disable_count;
  int is_enabled;
  char list_path[260];
  // Of the process that called EnablePerformanceOptimization last: what it had found when it loaded the library, and
  // how often the library was told of the end of one of its threads or of itself.
  int enabler_saw_debug_break;
  unsigned enabler_saw_dead_loop;
  int enabler_detaches;
};
