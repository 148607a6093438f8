#include "spread_process.h"

#include <atomic>
#include <cstring>

namespace {

constexpr char hidden_class[] = "__osw_glrc_window";

std::atomic<bool> has_parts;

}  // namespace

void note_creation(HDC hdc) {
  if (is_spread_process()) return;
  char name[sizeof hidden_class + 1];
  const int length = GetClassNameA(WindowFromDC(hdc), name, sizeof name);
  if (length != 0 && strcmp(name, hidden_class) == 0) has_parts.store(true, std::memory_order_relaxed);
}

bool is_spread_process() {
  return has_parts.load(std::memory_order_relaxed);
}
