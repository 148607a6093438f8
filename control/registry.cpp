#include "registry.h"

#include <cstring>

#include "startup/config/options.h"
#include "text.h"

namespace {

const wchar_t vendor_path[] = L"Software\\Z4graphics";
const wchar_t key_path[] = L"Software\\Z4graphics\\OGLSPANWrapper";

// For each option that oswctl has set: under its name what was there before, as it was, or an empty value of no type;
// and under its name with a mark the number that it was set to. The library reads nothing of this.
const wchar_t record_path[] = L"Software\\Z4graphics\\OGLSPANWrapper\\Set by oswctl";

bool is_missing(LSTATUS error) {
  return error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND;
}

LSTATUS write_value(const wchar_t* path, const std::wstring& name, DWORD type, const BYTE* data, size_t size) {
  HKEY key = nullptr;
  LSTATUS error = RegCreateKeyExW(HKEY_LOCAL_MACHINE, path, 0, nullptr, 0, KEY_SET_VALUE, nullptr, &key, nullptr);
  if (error != ERROR_SUCCESS) return error;
  error = RegSetValueExW(key, name.c_str(), 0, type, data, static_cast<DWORD>(size));
  RegCloseKey(key);
  return error;
}

LSTATUS write_number(const wchar_t* path, const std::wstring& name, uint32_t number) {
  return write_value(path, name, REG_DWORD, reinterpret_cast<const BYTE*>(&number), sizeof number);
}

LSTATUS delete_value(const wchar_t* path, const std::wstring& name) {
  HKEY key = nullptr;
  LSTATUS error = RegOpenKeyExW(HKEY_LOCAL_MACHINE, path, 0, KEY_SET_VALUE, &key);
  if (error == ERROR_SUCCESS) {
    error = RegDeleteValueW(key, name.c_str());
    RegCloseKey(key);
  }
  return is_missing(error) ? ERROR_SUCCESS : error;
}

LSTATUS read_value(const wchar_t* path, const std::wstring& name, stored_value* value) {
  *value = {};
  HKEY key = nullptr;
  LSTATUS error = RegOpenKeyExW(HKEY_LOCAL_MACHINE, path, 0, KEY_QUERY_VALUE, &key);
  if (error != ERROR_SUCCESS) return is_missing(error) ? ERROR_SUCCESS : error;
  DWORD size = 0;
  do {
    value->data.resize(size);
    error = RegQueryValueExW(key, name.c_str(), nullptr, &value->type, value->data.data(), &size);
    // Without room the call gives the size, as a success.
  } while (error == ERROR_MORE_DATA || (error == ERROR_SUCCESS && size > value->data.size()));
  RegCloseKey(key);
  value->present = error == ERROR_SUCCESS;
  value->data.resize(value->present ? size : 0);
  return is_missing(error) ? ERROR_SUCCESS : error;
}

std::wstring marked(const wchar_t* name) {
  return std::wstring(name) + L" (set)";
}

bool is_number(const stored_value& value, const stored_value& number) {
  return value.present && value.type == REG_DWORD && value.data == number.data;
}

// What the record has of an option: `*set_to` is not present where it has nothing.
LSTATUS read_record(const wchar_t* name, stored_value* before, stored_value* set_to) {
  const LSTATUS error = read_value(record_path, marked(name), set_to);
  return error == ERROR_SUCCESS ? read_value(record_path, name, before) : error;
}

LSTATUS forget(const wchar_t* name) {
  const LSTATUS error = delete_value(record_path, marked(name));
  const LSTATUS other = delete_value(record_path, name);
  return error == ERROR_SUCCESS ? other : error;
}

bool remove_if_empty(const wchar_t* path) {
  HKEY key = nullptr;
  if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, path, 0, KEY_READ, &key) != ERROR_SUCCESS) return false;
  DWORD keys = 1, values = 1;
  RegQueryInfoKeyW(key, nullptr, nullptr, nullptr, &keys, nullptr, nullptr, &values, nullptr, nullptr, nullptr,
                   nullptr);
  RegCloseKey(key);
  return keys == 0 && values == 0 && RegDeleteKeyW(HKEY_LOCAL_MACHINE, path) == ERROR_SUCCESS;
}

}  // namespace

LSTATUS read_stored(const wchar_t* name, stored_value* value) {
  return read_value(key_path, name, value);
}

LSTATUS set_number(const wchar_t* name, uint32_t number) {
  stored_value now, before, set_to;
  LSTATUS error = read_stored(name, &now);
  if (error == ERROR_SUCCESS) error = read_record(name, &before, &set_to);
  // The record comes first: without the value it is wrong about nothing, for it counts only where both agree.
  if (error == ERROR_SUCCESS && !is_number(now, set_to)) {
    error = write_value(record_path, name, now.present ? now.type : REG_NONE, now.data.data(), now.data.size());
  }
  if (error == ERROR_SUCCESS) error = write_number(record_path, marked(name), number);
  return error == ERROR_SUCCESS ? write_number(key_path, name, number) : error;
}

LSTATUS take_back(const wchar_t* name, bool* stays) {
  stored_value now, before, set_to;
  LSTATUS error = read_stored(name, &now);
  if (error == ERROR_SUCCESS) error = read_record(name, &before, &set_to);
  if (error != ERROR_SUCCESS) return error;
  *stays = now.present && !(set_to.present && is_number(now, set_to));
  // An empty value is no value to the library either.
  if (now.present && !*stays) {
    error = before.data.empty() ? delete_value(key_path, name)
                                : write_value(key_path, name, before.type, before.data.data(), before.data.size());
  }
  return error == ERROR_SUCCESS ? forget(name) : error;
}

LSTATUS delete_option(const wchar_t* name) {
  const LSTATUS error = delete_value(key_path, name);
  return error == ERROR_SUCCESS ? forget(name) : error;
}

void remove_empty_keys() {
  remove_if_empty(record_path);
  if (remove_if_empty(key_path)) remove_if_empty(vendor_path);
}

bool number_of(const stored_value& value, uint32_t* number) {
  // The library has room for four bytes, looks at no type and counts an empty value as not set. What a shorter value
  // leaves of them is zero.
  if (!value.present || value.data.empty() || value.data.size() > sizeof *number) return false;
  *number = 0;
  memcpy(number, value.data.data(), value.data.size());
  return true;
}

uint32_t value_in_force(const option& option, option_source* source) {
  stored_value stored;
  uint32_t number = option.fallback;
  *source = option_source::fallback;
  if (read_stored(option.name, &stored) == ERROR_SUCCESS && number_of(stored, &number)) {
    *source = option_source::registry;
  }
  if (read_option_variable(to_utf8(option.name).c_str(), &number)) *source = option_source::environment;
  return option.kind == option_kind::flag ? number != 0 : number;
}

std::wstring registry_problem(LSTATUS error) {
  const std::wstring key = std::wstring(L"HKEY_LOCAL_MACHINE\\") + key_path;
  if (error == ERROR_ACCESS_DENIED) return L"Windows refuses access to " + key + L"; run oswctl as administrator";
  return key + L" cannot be read or written" + system_reason(static_cast<DWORD>(error));
}
