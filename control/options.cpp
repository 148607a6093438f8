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
  static const wchar_t* const words[] = {L"default", L"registry", L"environment"};
  stored_value probe;
  const LSTATUS error = read_stored(option_list[0].name, &probe);
  if (error != ERROR_SUCCESS) return fail(status_failed, registry_problem(error));
  say(padded(L"option", name_width) + padded(L"value", 5) + padded(L"from", 11) + padded(L"default", 7) + L"meaning");
  for (const option& one : option_list) {
    option_source source;
    const std::wstring value = std::to_wstring(value_in_force(one, &source));
    say(padded(one.name, name_width) + padded(value, 5) + padded(words[static_cast<size_t>(source)], 11) +
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
  const LSTATUS error = set_number(chosen->name, static_cast<uint32_t>(value[0] - L'0'));
  return error == ERROR_SUCCESS ? status_ok : fail(status_failed, registry_problem(error));
}

int reset_options(bool all) {
  for (const option& one : option_list) {
    bool stays = false;
    const LSTATUS error = all ? delete_option(one.name) : take_back(one.name, &stays);
    if (error != ERROR_SUCCESS) return fail(status_failed, registry_problem(error));
    if (stays) say(std::wstring(one.name) + L" was not set by oswctl and stays; \"oswctl reset --all\" removes it too");
  }
  remove_empty_keys();
  return status_ok;
}
