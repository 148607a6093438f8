#include "option_values.h"

#include <cstring>

static const wchar_t key_path[] = L"Software\\Z4graphics\\OGLSPANWrapper";

static HKEY open_key() {
  HKEY key = nullptr;
  return RegOpenKeyExW(HKEY_LOCAL_MACHINE, key_path, 0, KEY_READ, &key) == ERROR_SUCCESS ? key : nullptr;
}

bool options_key_exists() {
  const HKEY key = open_key();
  if (key) RegCloseKey(key);
  return key != nullptr;
}

option_values read_options() {
  option_values values;
  const HKEY key = open_key();
  if (!key) return values;
  wchar_t name[256];
  char data[1024];
  for (DWORD i = 0;; ++i) {
    DWORD name_size = 256, data_size = sizeof data, type = 0;
    if (RegEnumValueW(key, i, name, &name_size, nullptr, &type, reinterpret_cast<BYTE*>(data), &data_size)) break;
    values[name] = {type, std::string(data, data_size)};
  }
  RegCloseKey(key);
  return values;
}

void write_option(const std::wstring& name, DWORD type, const std::string& data) {
  RegSetKeyValueW(HKEY_LOCAL_MACHINE, key_path, name.c_str(), type, data.data(), static_cast<DWORD>(data.size()));
}

void write_option(const std::wstring& name, DWORD number) {
  write_option(name, REG_DWORD, std::string(reinterpret_cast<const char*>(&number), sizeof number));
}

long long option_number(const std::wstring& name) {
  const option_values values = read_options();
  const auto found = values.find(name);
  DWORD number = 0;
  if (found == values.end() || found->second.data.size() != sizeof number) return -1;
  memcpy(&number, found->second.data.data(), sizeof number);
  return number;
}

void delete_options_key() {
  RegDeleteTreeW(HKEY_LOCAL_MACHINE, key_path);
  RegDeleteKeyW(HKEY_LOCAL_MACHINE, L"Software\\Z4graphics");
}
