#include "startup/options.h"

#include <cstring>

u32 OSW_DW_DeadLoopWhenLoadDll;
u32 OSW_DW_FakeAsOneMonitor;
u32 OSW_DW_SplitOneMonitor;
u32 OSW_DW_SplitParts;
u32 OSW_DW_SplitTwoPartsHorizontal;
u32 OSW_DW_UseSplitParentMethod;
u32 OSW_DW_ForceUnusedChildWindowSize1X1;
u32 OSW_DW_GLDispatchUseMtPath;
u32 OSW_DW_UseAppThreadToQueryState;

namespace {

constexpr char key_path[] = "Software\\Z4graphics\\OGLSPANWrapper";
constexpr DWORD string_size = 260;

enum class option_kind { flag, number };

struct option {
  const char* name;
  u32* variable;
  u32 default_value;
  option_kind kind;
};

const option options[] = {
    {"OSW_DW_DeadLoopWhenLoadDll", &OSW_DW_DeadLoopWhenLoadDll, 0, option_kind::flag},
    {"OSW_DW_FakeAsOneMonitor", &OSW_DW_FakeAsOneMonitor, 0, option_kind::flag},
    {"OSW_DW_SplitOneMonitor", &OSW_DW_SplitOneMonitor, 0, option_kind::flag},
    {"OSW_DW_SplitParts", &OSW_DW_SplitParts, 4, option_kind::number},
    {"OSW_DW_SplitTwoPartsHorizontal", &OSW_DW_SplitTwoPartsHorizontal, 1, option_kind::flag},
    {"OSW_DW_UseSplitParentMethod", &OSW_DW_UseSplitParentMethod, 0, option_kind::flag},
    {"OSW_DW_ForceUnusedChildWindowSize1X1", &OSW_DW_ForceUnusedChildWindowSize1X1, 0, option_kind::flag},
    {"OSW_DW_GLDispatchUseMtPath", &OSW_DW_GLDispatchUseMtPath, 0, option_kind::flag},
    {"OSW_DW_UseAppThreadToQueryState", &OSW_DW_UseAppThreadToQueryState, 1, option_kind::flag},
};

// The tag at the head of a name tells its type: OSW_DW a 32-bit number, OSW_SZ a string.
DWORD size_by_tag(const char* name) {
  return strncmp(name, "OSW_SZ", 6) == 0 ? string_size : sizeof(u32);
}

// Result: whether the registry has the value. The value's registered type is not looked at.
bool read_value(const char* name, u32* value) {
  HKEY key;
  if (RegOpenKeyA(HKEY_LOCAL_MACHINE, key_path, &key) != ERROR_SUCCESS) return false;
  BYTE data[string_size] = {};
  DWORD size = size_by_tag(name);
  const LSTATUS status = RegQueryValueExA(key, name, nullptr, nullptr, data, &size);
  RegCloseKey(key);
  if (status != ERROR_SUCCESS || size == 0) return false;
  memcpy(value, data, sizeof *value);
  return true;
}

void read_option(const option& wanted) {
  u32 value;
  if (!read_value(wanted.name, &value)) return;
  *wanted.variable = wanted.kind == option_kind::flag ? value != 0 : value;
}

}  // namespace

void __osw_read_options() {
  for (const option& each : options) *each.variable = each.default_value;
  for (const option& each : options) read_option(each);
}

void __osw_debug_spin() {
  while (OSW_DW_DeadLoopWhenLoadDll) read_option(options[0]);
}
