#include "startup/config/options.h"

#include <cstring>
#include <iterator>

#include "dispatch/report.h"
#include "ops/decimal.h"
#include "ops/relaxed.h"

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

void store(const option& wanted, u32 value) {
  *wanted.variable = wanted.kind == option_kind::flag ? value != 0 : value;
}

void read_option(const option& wanted) {
  u32 value;
  if (read_value(wanted.name, &value)) store(wanted, value);
}

// Result: whether the environment has a word on the option.
bool override_option(const option& wanted) {
  u32 value;
  if (!read_option_variable(wanted.name, &value)) return false;
  store(wanted, value);
  return true;
}

// Whether the option that holds a process up comes from the environment.
bool is_held_by_environment;

}  // namespace

bool read_option_variable(const char* name, u32* value) {
  char text[variable_size] = {};
  const DWORD length = GetEnvironmentVariableA(name, text, sizeof text);
  if (length == 0) return false;
  if (length < sizeof text && read_decimal(text, value)) return true;
  __osw_report(severity_warning, "The environment variable %s is no decimal number of 32 bits and is ignored.\n", name);
  return false;
}

void __osw_read_options() {
  for (const option& each : options) *each.variable = each.default_value;
  for (const option& each : options) read_option(each);
  is_held_by_environment = override_option(options[0]);
  for (size_t i = 1; i < std::size(options); ++i) override_option(options[i]);
}

void __osw_debug_spin() {
  if (is_held_by_environment) {
    // Nobody outside can change a process's environment, and the registry does not count.
    while (relaxed_load(OSW_DW_DeadLoopWhenLoadDll)) {
    }
    return;
  }
  while (OSW_DW_DeadLoopWhenLoadDll) read_option(options[0]);
}
