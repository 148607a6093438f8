#include "registry.h"

#include <cstring>

#include "text.h"

namespace {

const wchar_t vendor_path[] = L"Software\\Z4graphics";
const wchar_t key_path[] = L"Software\\Z4graphics\\OGLSPANWrapper";

bool is_missing(LSTATUS error) {
  return error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND;
}

LSTATUS write_value(const wchar_t* name, DWORD type, const BYTE* data, size_t size) {
  HKEY key = nullptr;
  LSTATUS error = RegCreateKeyExW(HKEY_LOCAL_MACHINE, key_path, 0, nullptr, 0, KEY_SET_VALUE, nullptr, &key, nullptr);
  if (error != ERROR_SUCCESS) return error;
  error = RegSetValueExW(key, name, 0, type, data, static_cast<DWORD>(size));
  RegCloseKey(key);
  return error;
}

LSTATUS delete_value(const wchar_t* name) {
  HKEY key = nullptr;
  LSTATUS error = RegOpenKeyExW(HKEY_LOCAL_MACHINE, key_path, 0, KEY_SET_VALUE, &key);
  if (error == ERROR_SUCCESS) {
    error = RegDeleteValueW(key, name);
    RegCloseKey(key);
  }
  return is_missing(error) ? ERROR_SUCCESS : error;
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
  *value = {};
  HKEY key = nullptr;
  LSTATUS error = RegOpenKeyExW(HKEY_LOCAL_MACHINE, key_path, 0, KEY_QUERY_VALUE, &key);
  if (error != ERROR_SUCCESS) return is_missing(error) ? ERROR_SUCCESS : error;
  DWORD size = 0;
  do {
    value->data.resize(size);
    error = RegQueryValueExW(key, name, nullptr, &value->type, value->data.data(), &size);
    // Without room the call gives the size, as a success.
  } while (error == ERROR_MORE_DATA || (error == ERROR_SUCCESS && size > value->data.size()));
  RegCloseKey(key);
  value->present = error == ERROR_SUCCESS;
  value->data.resize(value->present ? size : 0);
  return is_missing(error) ? ERROR_SUCCESS : error;
}

LSTATUS write_number(const wchar_t* name, uint32_t number) {
  return write_value(name, REG_DWORD, reinterpret_cast<const BYTE*>(&number), sizeof number);
}

LSTATUS write_stored(const wchar_t* name, const stored_value& value) {
  return value.present ? write_value(name, value.type, value.data.data(), value.data.size()) : delete_value(name);
}

void remove_empty_keys() {
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

uint32_t value_in_force(const option& option, bool* is_set) {
  stored_value stored;
  uint32_t number = option.fallback;
  *is_set = read_stored(option.name, &stored) == ERROR_SUCCESS && number_of(stored, &number);
  return option.kind == option_kind::flag ? number != 0 : number;
}

std::wstring registry_problem(LSTATUS error) {
  const std::wstring key = std::wstring(L"HKEY_LOCAL_MACHINE\\") + key_path;
  if (error == ERROR_ACCESS_DENIED) return L"Windows refuses access to " + key + L"; run oswctl as administrator";
  return key + L" cannot be read or written" + system_reason(static_cast<DWORD>(error));
}
