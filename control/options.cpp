#include "options.h"

#include <cwchar>

#include "registry.h"
#include "text.h"

namespace {

std::wstring padded(std::wstring text, size_t width) {
  if (text.size() < width) text.append(width - text.size(), L' ');
  return text + L"  ";
}

// The accepted values as a sentence has them: "0 or 1".
std::wstring choices(const option& option) {
  std::wstring text;
  const std::wstring values = option.accepted;
  for (size_t i = 0; i < values.size(); ++i) {
    if (i > 0) text += i + 1 == values.size() ? L" or " : L", ";
    text += values[i];
  }
  return text;
}

}  // namespace

int print_options() {
  constexpr size_t name_width = 37;
  stored_value probe;
  const LSTATUS error = read_stored(option_list[0].name, &probe);
  if (error != ERROR_SUCCESS) return fail(status_failed, registry_problem(error));
  say(padded(L"option", name_width) + padded(L"value", 5) + padded(L"from", 8) + padded(L"default", 7) + L"meaning");
  for (const option& one : option_list) {
    bool is_set = false;
    const std::wstring value = std::to_wstring(value_in_force(one, &is_set));
    say(padded(one.name, name_width) + padded(value, 5) + padded(is_set ? L"registry" : L"default", 8) +
        padded(std::to_wstring(one.fallback), 7) + one.meaning);
  }
  return status_ok;
}

int set_option(const std::wstring& name, const std::wstring& value) {
  const option* chosen = find_option(name);
  if (!chosen) return fail(status_wrong_input, L"there is no option " + name + L"; \"oswctl options\" prints them all");
  if (value.size() != 1 || !wcschr(chosen->accepted, value[0])) {
    return fail(status_wrong_input, std::wstring(chosen->name) + L" takes " + choices(*chosen) + L", not " + value);
  }
  const LSTATUS error = write_number(chosen->name, static_cast<uint32_t>(value[0] - L'0'));
  return error == ERROR_SUCCESS ? status_ok : fail(status_failed, registry_problem(error));
}

int reset_options() {
  for (const option& one : option_list) {
    const LSTATUS error = write_stored(one.name, {});
    if (error != ERROR_SUCCESS) return fail(status_failed, registry_problem(error));
  }
  remove_empty_keys();
  return status_ok;
}
