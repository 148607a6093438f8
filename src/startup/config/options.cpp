#include "startup/config/options.h"

#include <cstring>

#define OSW_OPTION(name, ...) u32 name;
#include "startup/config/options.inc"
#undef OSW_OPTION

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

#define OSW_OPTION(name, kind, default_value, ...) {#name, &name, default_value, option_kind::kind},
const option options[] = {
#include "startup/config/options.inc"
};
#undef OSW_OPTION

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
