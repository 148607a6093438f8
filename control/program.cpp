#include "program.h"

#include <windows.h>

#include "paths.h"
#include "pe.h"

namespace {

// The file that `path` means with or without ".exe"; empty when there is neither.
std::wstring with_extension(const std::wstring& path) {
  if (file_exists(path)) return path;
  return file_exists(path + L".exe") ? path + L".exe" : L"";
}

std::wstring along_path(const std::wstring& name) {
  std::wstring list(32768, L'\0');
  list.resize(GetEnvironmentVariableW(L"PATH", list.data(), static_cast<DWORD>(list.size())));
  for (size_t start = 0; start < list.size();) {
    const size_t end = list.find(L';', start);
    const std::wstring folder = list.substr(start, end == std::wstring::npos ? end : end - start);
    const std::wstring path = folder.empty() ? L"" : with_extension(in_folder(folder, name));
    if (!path.empty()) return path;
    start = end == std::wstring::npos ? list.size() : end + 1;
  }
  return L"";
}

std::wstring locate(const std::wstring& given) {
  const std::wstring path = with_extension(full_path(given));
  const bool has_folder = given.find_first_of(L"\\/:") != std::wstring::npos;
  return path.empty() && !has_folder ? along_path(given) : path;
}

std::wstring kind_problem(const std::wstring& path, pe_kind kind) {
  switch (kind) {
    case pe_kind::unreadable:
      return path + L" cannot be read";
    case pe_kind::not_pe:
      return path + L" is not a Windows program";
    case pe_kind::for_32_bit:
      return path + L" is a 32-bit program; only 64-bit programs can be spread over parts";
    case pe_kind::for_other_processor:
      return path + L" is a program for another kind of processor";
    case pe_kind::for_64_bit:
      break;
  }
  return L"";
}

}  // namespace

bool find_program(const std::wstring& given, program* found, std::wstring* problem) {
  const std::wstring located = locate(given);
  const std::wstring path = full_path(located.empty() ? given : located);
  // Before anything is said of the file: most programs cannot look into a folder as long as that.
  if (path.size() > longest_path) {
    *problem = path + L" is longer than 259 characters, for which the library has no room; move the program";
    return false;
  }
  if (located.empty()) {
    *problem = L"there is no program " + given;
    return false;
  }
  pe_image image{};
  *problem = kind_problem(path, read_pe(path, &image));
  if (problem->empty() && image.is_library) *problem = path + L" is a library, not a program";
  if (!problem->empty()) return false;

  const size_t name_start = path.find_last_of(L'\\') + 1;
  found->path = path;
  found->folder = path.substr(0, name_start);
  found->name = path.substr(name_start);
  found->uses_console = image.uses_console;
  return true;
}
