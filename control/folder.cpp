#include "folder.h"

#include <windows.h>

#include <algorithm>
#include <vector>

#include "paths.h"
#include "pe.h"

namespace {

std::vector<std::wstring> programs_in(const std::wstring& folder) {
  std::vector<std::wstring> programs;
  WIN32_FIND_DATAW found;
  const HANDLE search = FindFirstFileW(in_folder(folder, L"*.exe").c_str(), &found);
  if (search == INVALID_HANDLE_VALUE) return programs;
  do {
    if (!(found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY)) programs.push_back(in_folder(folder, found.cFileName));
  } while (FindNextFileW(search, &found));
  FindClose(search);
  std::sort(programs.begin(), programs.end());
  return programs;
}

}  // namespace

std::wstring name_problem(const std::wstring& folder) {
  const std::wstring path = full_path(folder);
  if (path.size() > longest_path) {
    return path + L" is longer than 259 characters, for which the library has no room; move the folder";
  }
  return folder_exists(folder) ? L"" : L"there is no folder " + folder;
}

std::wstring folder_problem(const std::wstring& folder) {
  static const std::wstring consequence = L", which these 64-bit libraries would keep from starting; ";
  std::wstring stranger;
  bool has_64_bit = false;
  for (const std::wstring& path : programs_in(folder)) {
    pe_image image;
    const pe_kind kind = read_pe(path, &image);
    has_64_bit |= kind == pe_kind::for_64_bit;
    if (kind != pe_kind::for_32_bit && kind != pe_kind::for_other_processor) continue;
    const std::wstring sentence =
        path + (kind == pe_kind::for_32_bit ? L" is a 32-bit program" : L" is a program for another kind of processor");
    if (file_mentions(path, "opengl32"))
      return sentence + consequence + L"only 64-bit programs can be spread over parts";
    if (stranger.empty()) stranger = sentence;
  }
  if (stranger.empty() || has_64_bit) return L"";
  return stranger + L", and the folder has none for 64 bits; only 64-bit programs can be spread over parts";
}
