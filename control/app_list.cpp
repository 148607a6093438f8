#include "app_list.h"

#include <cstring>

#include "paths.h"
#include "text.h"

namespace {

constexpr char white_space[] = " \t\n\v\f\r";

// The short form of a path has none but plain letters, where the volume keeps short names.
bool for_library(const std::wstring& path, std::string* result) {
  if (to_ansi(path, result) && result->size() < library_path_size) return true;
  const std::wstring short_form = short_path(path);
  return !short_form.empty() && to_ansi(short_form, result) && result->size() < library_path_size;
}

std::wstring path_problem(const std::wstring& path) {
  return L"the library cannot open an application list under the name " + path +
         L"; use one of up to 259 characters, all of them in this machine's code page, with --list";
}

bool read_file(const std::string& path, std::string* text) {
  const HANDLE file =
      CreateFileA(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0, nullptr);
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

bool listed_name(const program& target, std::string* name, std::wstring* problem, UINT code_page) {
  const std::wstring consequence = L", so the library cannot find it in an application list; ";
  if (!to_ansi(target.name, name, code_page)) {
    *problem = target.name + L" has a letter in its name that this machine's code page lacks" + consequence +
               L"rename the program";
  } else if (name->find('\\') != std::string::npos) {
    // In some code pages the second byte of a letter; the library takes what is behind it for the name.
    *problem = target.name + L" has a letter in its name that ends as a backslash in this machine's code page" +
               consequence + L"rename the program";
  } else if (name->find_first_of(white_space) != std::string::npos) {
    *problem = target.name + L" has a blank in its name" + consequence + L"rename the program";
  } else {
    return true;
  }
  return false;
}

bool temporary_list(const std::wstring& name, std::string* path, std::wstring* problem) {
  wchar_t folder[MAX_PATH + 1] = L"";
  std::string folder_for_library;
  if (!GetTempPathW(MAX_PATH + 1, folder)) {
    *problem = L"there is no folder for temporary files" + system_reason(GetLastError());
    return false;
  }
  if (for_library(folder, &folder_for_library)) {
    *path = folder_for_library + to_utf8(name);
    if (path->size() < library_path_size) return true;
  }
  *problem = path_problem(folder + name);
  return false;
}

bool take_app_list(const std::wstring& path, std::string* path_for_library, std::wstring* problem) {
  const std::wstring full = full_path(path);
  // The library opens the list for writing too, so that a file that cannot be written counts as no list.
  const HANDLE file = CreateFileW(full.c_str(), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                  nullptr, OPEN_EXISTING, 0, nullptr);
  if (file == INVALID_HANDLE_VALUE) {
    *problem =
        L"the application list " + full + L" cannot be opened for reading and writing" + system_reason(GetLastError());
    return false;
  }
  CloseHandle(file);
  if (for_library(full, path_for_library)) return true;
  *problem = path_problem(full);
  return false;
}

std::vector<std::string> words_of_list(const std::string& path) {
  std::vector<std::string> words;
  std::string text;
  if (path.empty() || !read_file(path, &text)) return words;
  for (size_t start = text.find_first_not_of(white_space); start != std::string::npos;) {
    const size_t end = text.find_first_of(white_space, start);
    words.push_back(text.substr(start, end == std::string::npos ? end : end - start));
    start = text.find_first_not_of(white_space, end);
  }
  return words;
}

bool list_has(const std::string& path, const program& target) {
  std::string name;
  std::wstring problem;
  if (!listed_name(target, &name, &problem)) return false;
  for (const std::string& word : words_of_list(path)) {
    if (_stricmp(word.c_str(), name.c_str()) == 0) return true;
  }
  return false;
}
