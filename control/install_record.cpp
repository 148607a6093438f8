#include "install_record.h"

#include <windows.h>

#include <cstdio>

#include "files.h"
#include "paths.h"

namespace {

// The first line of a record says how long the files are to stay.
const std::string first_line = "Placed by oswctl; \"oswctl remove\" takes these files away. Name, bytes, hash:\r\n";
const std::string first_line_for_a_run =
    "Placed by oswctl for a run; the end of that, or \"oswctl remove\", takes these files away. Name, bytes, hash:\r\n";

// FNV-1a: nobody forges a library to have it taken away, so a short hash will do.
uint64_t hash_of(uint64_t hash, const unsigned char* bytes, size_t size) {
  for (size_t i = 0; i < size; ++i) hash = (hash ^ bytes[i]) * 0x100000001B3u;
  return hash;
}

HANDLE open_to_read(const std::wstring& path) {
  return CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING,
                     FILE_FLAG_SEQUENTIAL_SCAN, nullptr);
}

bool read_text(const std::wstring& path, std::string* text) {
  const HANDLE file = open_to_read(path);
  if (file == INVALID_HANDLE_VALUE) return false;
  // A record has a few lines; a file with more is none, and its beginning shows that.
  text->resize(4096);
  DWORD count = 0;
  const bool is_good = ReadFile(file, text->data(), static_cast<DWORD>(text->size()), &count, nullptr);
  CloseHandle(file);
  text->resize(count);
  return is_good;
}

bool read_line(const std::string& line, placed_file* placed) {
  char name[64] = "";
  unsigned long long size = 0, hash = 0;
  int end = 0;
  if (sscanf(line.c_str(), "%63s %llu %llx%n", name, &size, &hash, &end) != 3) return false;
  if (static_cast<size_t>(end) != line.size()) return false;
  *placed = {name, {size, hash}};
  return true;
}

std::wstring unfinished_record(const std::wstring& folder) {
  return in_folder(folder, record_file) + L".new";
}

}  // namespace

bool take_print(const std::wstring& path, file_print* print) {
  const HANDLE file = open_to_read(path);
  if (file == INVALID_HANDLE_VALUE) return false;
  std::vector<unsigned char> buffer(1 << 16);
  DWORD count = 0;
  *print = {0, 0xCBF29CE484222325u};
  bool is_good = false;
  while ((is_good = ReadFile(file, buffer.data(), static_cast<DWORD>(buffer.size()), &count, nullptr)) && count > 0) {
    print->size += count;
    print->hash = hash_of(print->hash, buffer.data(), count);
  }
  CloseHandle(file);
  return is_good;
}

bool read_record(const std::wstring& folder, install_record* record) {
  const std::wstring path = in_folder(folder, record_file);
  *record = {};
  if (GetFileAttributesW(path.c_str()) == INVALID_FILE_ATTRIBUTES) return true;
  std::string text;
  if (!read_text(path, &text)) return false;
  record->for_a_run = text.starts_with(first_line_for_a_run);
  const std::string& head = record->for_a_run ? first_line_for_a_run : first_line;
  if (!text.starts_with(head)) return false;
  for (size_t start = head.size(); start < text.size();) {
    const size_t end = text.find("\r\n", start);
    placed_file one;
    if (end == std::string::npos || !read_line(text.substr(start, end - start), &one)) return false;
    record->placed.push_back(one);
    start = end + 2;
  }
  return true;
}

bool write_record(const std::wstring& folder, const install_record& record) {
  std::string text = record.for_a_run ? first_line_for_a_run : first_line;
  for (const placed_file& one : record.placed) {
    char line[128];
    snprintf(line, sizeof line, "%s %llu %llx\r\n", one.name.c_str(), static_cast<unsigned long long>(one.print.size),
             static_cast<unsigned long long>(one.print.hash));
    text += line;
  }
  const std::wstring path = in_folder(folder, record_file), fresh = unfinished_record(folder);
  if (!write_file(fresh, text)) return false;
  if (move_file(fresh, path, MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH)) return true;
  const DWORD error = GetLastError();
  delete_file(fresh);
  SetLastError(error);
  return false;
}

bool delete_unfinished_record(const std::wstring& folder) {
  return delete_file(unfinished_record(folder));
}

bool delete_record(const std::wstring& folder) {
  delete_unfinished_record(folder);
  return delete_file(in_folder(folder, record_file));
}

bool has_placed(const std::vector<placed_file>& placed, const std::string& name, const file_print& print) {
  for (const placed_file& one : placed) {
    if (one.name == name && one.print.size == print.size && one.print.hash == print.hash) return true;
  }
  return false;
}
