#include "files.h"

#include <windows.h>

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <vector>

bool exists(const std::wstring& path) {
  return GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

std::string read_bytes(const std::wstring& path) {
  std::string bytes;
  FILE* file = _wfopen(path.c_str(), L"rb");
  if (!file) return bytes;
  char buffer[65536];
  while (const size_t count = fread(buffer, 1, sizeof buffer, file)) bytes.append(buffer, count);
  fclose(file);
  return bytes;
}

void write_bytes(const std::wstring& path, const std::string& bytes) {
  FILE* file = _wfopen(path.c_str(), L"wb");
  if (!file) {
    printf("cannot write %ls\n", path.c_str());
    exit(1);
  }
  fwrite(bytes.data(), 1, bytes.size(), file);
  fclose(file);
}

void make_folder(const std::wstring& path) {
  std::filesystem::create_directories(path);
}

std::map<std::wstring, std::string> folder_contents(const std::wstring& folder) {
  std::map<std::wstring, std::string> contents;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
    const std::wstring path = entry.path().wstring();
    contents[path.substr(folder.size())] = entry.is_directory() ? "(folder)" : read_bytes(path);
  }
  return contents;
}

static void delete_once(const std::wstring& folder) {
  std::vector<std::filesystem::path> paths;
  std::error_code error;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(folder, error)) paths.push_back(entry.path());
  // What a folder holds comes after it.
  for (auto path = paths.rbegin(); path != paths.rend(); ++path) {
    if (!DeleteFileW(path->c_str())) RemoveDirectoryW(path->c_str());
  }
  RemoveDirectoryW(folder.c_str());
}

void delete_folder(const std::wstring& folder) {
  // The file of a process that has just ended can stay in use for a moment.
  for (int i = 0; i < 100 && exists(folder); ++i) {
    if (i > 0) Sleep(50);
    delete_once(folder);
  }
  if (!exists(folder)) return;
  printf("cannot delete %ls\n", folder.c_str());
  exit(1);
}

static size_t headers_of(const std::string& program) {
  long start = 0;
  memcpy(&start, program.data() + offsetof(IMAGE_DOS_HEADER, e_lfanew), sizeof start);
  return static_cast<size_t>(start);
}

static std::string with_word(std::string program, size_t offset, unsigned short word) {
  memcpy(program.data() + headers_of(program) + offset, &word, sizeof word);
  return program;
}

std::string with_machine(std::string program, unsigned short machine) {
  return with_word(program, offsetof(IMAGE_NT_HEADERS64, FileHeader.Machine), machine);
}

std::string with_subsystem(std::string program, unsigned short subsystem) {
  return with_word(program, offsetof(IMAGE_NT_HEADERS64, OptionalHeader.Subsystem), subsystem);
}

std::string as_library(std::string program) {
  const size_t offset = offsetof(IMAGE_NT_HEADERS64, FileHeader.Characteristics);
  unsigned short flags = 0;
  memcpy(&flags, program.data() + headers_of(program) + offset, sizeof flags);
  return with_word(program, offset, flags | IMAGE_FILE_DLL);
}

bool delete_when_ended(const std::wstring& program) {
  for (int i = 0; i < 400 && !DeleteFileW(program.c_str()); ++i) Sleep(50);
  return !exists(program);
}

bool wait_for_file(const std::wstring& path) {
  for (int i = 0; i < 400 && !exists(path); ++i) Sleep(50);
  return exists(path);
}
