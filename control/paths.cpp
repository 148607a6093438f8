#include "paths.h"

std::wstring path_of_module(HMODULE module) {
  std::wstring path(32768, L'\0');
  path.resize(GetModuleFileNameW(module, path.data(), static_cast<DWORD>(path.size())));
  return path;
}

std::wstring own_path() {
  return path_of_module(nullptr);
}

std::wstring own_folder() {
  const std::wstring path = own_path();
  return path.substr(0, path.find_last_of(L'\\') + 1);
}

std::wstring in_folder(const std::wstring& folder, const std::wstring& file) {
  const bool has_end = !folder.empty() && (folder.back() == L'\\' || folder.back() == L'/');
  return has_end ? folder + file : folder + L"\\" + file;
}

bool file_exists(const std::wstring& path) {
  const DWORD attributes = GetFileAttributesW(path.c_str());
  return attributes != INVALID_FILE_ATTRIBUTES && !(attributes & FILE_ATTRIBUTE_DIRECTORY);
}

bool folder_exists(const std::wstring& path) {
  const DWORD attributes = GetFileAttributesW(path.c_str());
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY);
}

std::wstring full_path(const std::wstring& path) {
  const DWORD length = GetFullPathNameW(path.c_str(), 0, nullptr, nullptr);
  if (length == 0) return path;
  std::wstring result(length, L'\0');
  result.resize(GetFullPathNameW(path.c_str(), length, result.data(), nullptr));
  return result;
}

std::wstring short_path(const std::wstring& path) {
  const DWORD length = GetShortPathNameW(path.c_str(), nullptr, 0);
  std::wstring result(length, L'\0');
  result.resize(length == 0 ? 0 : GetShortPathNameW(path.c_str(), result.data(), length));
  return result;
}
