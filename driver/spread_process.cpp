#include "spread_process.h"

#include <atomic>
#include <cstring>

#include "ops/decimal.h"

namespace {

constexpr char hidden_class[] = "__osw_glrc_window";

std::atomic<bool> has_parts;
std::atomic<bool> is_basic;  // set before has_parts

// The library's switch of its modes, read as the library does.
bool is_extended() {
  char text[variable_size] = {};
  u32 value = 0;
  const DWORD length = GetEnvironmentVariableA("OSW_EXTENDED", text, sizeof text);
  return length != 0 && length < sizeof text && read_decimal(text, &value) && value != 0;
}

}  // namespace

void note_creation(HDC hdc) {
  if (is_spread_process()) return;
  char name[sizeof hidden_class + 1];
  const int length = GetClassNameA(WindowFromDC(hdc), name, sizeof name);
  if (length == 0 || strcmp(name, hidden_class) != 0) return;
  is_basic.store(!is_extended(), std::memory_order_relaxed);
  has_parts.store(true, std::memory_order_release);
}

bool is_spread_process() {
  return has_parts.load(std::memory_order_relaxed);
}

bool is_told_less() {
  return has_parts.load(std::memory_order_acquire) && is_basic.load(std::memory_order_relaxed);
}
