#include "app_list.h"

#include <windows.h>

#include <cstring>

#include "paths.h"
#include "text.h"

namespace {

// The library keeps names and the path of the list in 260 bytes, with a zero at the end.
constexpr size_t longest = 259;

constexpr char white_space[] = " \t\n\v\f\r";

// The name as the library compares it; false, with a sentence in `*problem`, when it cannot be found in a list.
bool listed_name(const program& target, std::string* name, std::wstring* problem) {
  const std::wstring consequence = L", so the library cannot find it in an application list; ";
  if (!to_ansi(target.name, name)) {
    *problem = target.name + L" has a letter in its name that this machine's code page lacks" + consequence +
               L"rename the program";
  } else if (name->find_first_of(white_space) != std::string::npos) {
    *problem = target.name + L" has a blank in its name" + consequence + L"rename the program";
  } else if (target.path.size() > longest) {
    *problem = target.path + L" is longer than 259 characters" + consequence + L"move the program";
  } else {
    return true;
  }
  return false;
}

bool path_for_library(app_list* list, std::wstring* problem) {
  if (to_ansi(list->path, &list->ansi_path) && list->ansi_path.size() <= longest) return true;
  *problem = L"the library cannot open an application list under the name " + list->path +
             L"; use one of up to 259 characters, all of them in this machine's code page, with --list";
  return false;
}

bool read_file(const std::wstring& path, std::string* text) {
  const HANDLE file =
      CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0, nullptr);
  if (file == INVALID_HANDLE_VALUE) return false;
  LARGE_INTEGER size{};
  DWORD read = 0;
  GetFileSizeEx(file, &size);
  text->resize(static_cast<size_t>(size.QuadPart));
  const bool done = ReadFile(file, text->data(), static_cast<DWORD>(text->size()), &read, nullptr);
  CloseHandle(file);
  return done && read == text->size();
}

}  // namespace

bool can_be_listed(const program& target, std::wstring* problem) {
  std::string name;
  return listed_name(target, &name, problem);
}

bool make_app_list(const program& target, app_list* list, std::wstring* problem) {
  std::string name;
  wchar_t folder[MAX_PATH + 1] = L"", path[MAX_PATH] = L"";
  if (!listed_name(target, &name, problem)) return false;
  if (!GetTempPathW(MAX_PATH + 1, folder) || !GetTempFileNameW(folder, L"osw", 0, path)) {
    *problem = L"no file can be made in the folder for temporary files " + std::wstring(folder) +
               system_reason(GetLastError());
    return false;
  }
  *list = {path, "", true};
  name += "\r\n";
  DWORD written = 0;
  const HANDLE file = CreateFileW(path, GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
  const bool is_open = file != INVALID_HANDLE_VALUE;
  const bool is_whole = is_open && WriteFile(file, name.data(), static_cast<DWORD>(name.size()), &written, nullptr);
  if (!is_whole) {
    *problem = L"the application list " + list->path + L" cannot be written" + system_reason(GetLastError());
  }
  if (is_open) CloseHandle(file);
  if (is_whole && path_for_library(list, problem)) return true;
  drop_app_list(*list);
  return false;
}

bool take_app_list(const std::wstring& path, app_list* list, std::wstring* problem) {
  *list = {full_path(path), "", false};
  // The library opens the list for writing too, so that a file that cannot be written counts as no list.
  const HANDLE file = CreateFileW(list->path.c_str(), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                  nullptr, OPEN_EXISTING, 0, nullptr);
  if (file == INVALID_HANDLE_VALUE) {
    *problem = L"the application list " + list->path + L" cannot be opened for reading and writing" +
               system_reason(GetLastError());
    return false;
  }
  CloseHandle(file);
  return path_for_library(list, problem);
}

bool list_has(const app_list& list, const program& target) {
  std::string name, text;
  std::wstring problem;
  if (!listed_name(target, &name, &problem) || !read_file(list.path, &text)) return false;
  for (size_t start = text.find_first_not_of(white_space); start != std::string::npos;) {
    const size_t end = text.find_first_of(white_space, start);
    const std::string word = text.substr(start, end == std::string::npos ? end : end - start);
    if (_stricmp(word.c_str(), name.c_str()) == 0) return true;
    start = text.find_first_not_of(white_space, end);
  }
  return false;
}

void drop_app_list(const app_list& list) {
  if (list.is_ours) DeleteFileW(list.path.c_str());
}
