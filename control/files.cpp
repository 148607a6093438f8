#include "files.h"

namespace {

constexpr DWORD move_pause_ms = 20;
constexpr int move_tries = 50;

void note_step() {
  const DWORD error = GetLastError();
  if (after_file_step) after_file_step();
  SetLastError(error);
}

bool move_patiently(const std::wstring& from, const std::wstring& to, DWORD flags) {
  for (int i = 1;; ++i) {
    if (MoveFileExW(from.c_str(), to.c_str(), flags)) return true;
    const DWORD error = GetLastError();
    if ((error != ERROR_ACCESS_DENIED && error != ERROR_SHARING_VIOLATION) || i == move_tries) {
      SetLastError(error);
      return false;
    }
    Sleep(move_pause_ms);
  }
}

}  // namespace

void (*after_file_step)();

bool write_and_close(HANDLE file, const std::string& text) {
  if (file == INVALID_HANDLE_VALUE) return false;
  DWORD written = 0;
  const bool is_whole = WriteFile(file, text.data(), static_cast<DWORD>(text.size()), &written, nullptr);
  const DWORD error = GetLastError();
  SetEndOfFile(file);
  CloseHandle(file);
  SetLastError(error);
  return is_whole;
}

bool write_file(const std::wstring& path, const std::string& text) {
  const HANDLE file =
      CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
  note_step();
  const bool is_done = write_and_close(file, text);
  note_step();
  return is_done;
}

bool copy_file(const std::wstring& from, const std::wstring& to) {
  bool is_done = CopyFileW(from.c_str(), to.c_str(), TRUE);
  note_step();
  is_done = is_done && SetFileAttributesW(to.c_str(), FILE_ATTRIBUTE_NORMAL);
  note_step();
  return is_done;
}

bool move_file(const std::wstring& from, const std::wstring& to, DWORD flags) {
  const bool is_done = move_patiently(from, to, flags);
  note_step();
  return is_done;
}

bool delete_file(const std::wstring& path) {
  const bool is_done = DeleteFileW(path.c_str());
  note_step();
  return is_done;
}

HANDLE hold_file_of_our_own(const std::wstring& path) {
  const HANDLE file = CreateFileW(path.c_str(), GENERIC_WRITE | DELETE, 0, nullptr, OPEN_ALWAYS,
                                  FILE_ATTRIBUTE_NORMAL | FILE_FLAG_DELETE_ON_CLOSE, nullptr);
  note_step();
  return file;
}
