#include "startup/config/shared.h"

#include <cstring>

__attribute__((section("Shared"), shared)) __osw_shared_section __osw_shared = {};

// Turns the wrapper on for processes that attach from now on and whose executable the list names. `path` is the name of
// the list file; more than 259 characters of it are cut. Result: where the path is kept. Any thread.
extern "C" char* EnablePerformanceOptimization(const char* path) {
  __osw_shared.enable = 1;
  memset(__osw_shared.list_path, 0, list_path_size);
  memcpy(__osw_shared.list_path, path, strnlen(path, list_path_size - 1));
  return __osw_shared.list_path;
}

// Turns it off again, for processes that attach from now on. The path stays.
extern "C" void DisablePerformanceOptimization() {
  __osw_shared.enable = 0;
}
