#include "folder_lock.h"

#include "files.h"
#include "install_record.h"
#include "paths.h"
#include "text.h"

namespace {

constexpr DWORD lock_pause_ms = 20;
constexpr int most_tries = 500;
// Windows refuses a file in just these words while it is being deleted, and for good where one may not write.
constexpr int most_tries_when_denied = 25;

int tries_after(DWORD error) {
  if (error == ERROR_SHARING_VIOLATION) return most_tries;
  return error == ERROR_ACCESS_DENIED ? most_tries_when_denied : 1;
}

std::wstring lock_problem(const std::wstring& folder, DWORD error, const wchar_t* when_denied) {
  if (error == ERROR_ACCESS_DENIED) return L"Windows does not let you write to " + folder + L"; " + when_denied;
  if (error == ERROR_SHARING_VIOLATION) {
    return L"another oswctl is at work in " + folder + L" and does not end; end it and try again";
  }
  return folder + L" cannot be written to" + system_reason(error);
}

}  // namespace

HANDLE lock_folder(const std::wstring& folder, const wchar_t* when_denied, std::wstring* problem) {
  // A file in the folder, and no mutex: the other may be in another session, or have other rights.
  const std::wstring path = in_folder(folder, record_file) + L".lock";
  for (int i = 1;; ++i) {
    const HANDLE lock = hold_file_of_our_own(path);
    if (lock != INVALID_HANDLE_VALUE) return lock;
    const DWORD error = GetLastError();
    if (i >= tries_after(error)) {
      *problem = lock_problem(folder, error, when_denied);
      return nullptr;
    }
    Sleep(lock_pause_ms);
  }
}
