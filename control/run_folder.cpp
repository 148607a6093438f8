#include "run_folder.h"

#include "folder.h"
#include "folder_lock.h"
#include "paths.h"
#include "placing.h"
#include "text.h"
#include "wrapper.h"

namespace {

constexpr DWORD deletion_pause_ms = 50;
constexpr int deletion_tries = 40;
constexpr DWORD look_pause_ms = 10;
constexpr int look_tries = 20;
constexpr wchar_t what_to_do_once[] =
    L"place the libraries there once, with \"oswctl install\" as administrator, and run needs no such right";

// Without the lock, for which one would need the right to write. Another oswctl may just be replacing the record.
bool holds_for_a_run(const std::wstring& folder) {
  install_record record{};
  for (int i = 0; i < look_tries && !read_record(folder, &record); ++i) Sleep(look_pause_ms);
  return record.for_a_run;
}

// Whether the program finds a wrapper that no run has placed. A file that a run has placed is never there without its
// record; one that has come meanwhile may be such a file.
bool finds_wrapper(const std::wstring& folder) {
  const std::wstring beside = in_folder(folder, wrapper_file);
  const bool was_beside = file_exists(beside);
  if (holds_for_a_run(folder)) return false;
  if (file_exists(beside)) return was_beside;
  const std::wstring elsewhere = find_wrapper(folder);
  return !elsewhere.empty() && wrapper_problem(elsewhere).empty();
}

// A file that is held so can be loaded, and neither be deleted nor replaced.
HANDLE hold(const std::wstring& path) {
  return CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
}

// A library stays in use for a moment after the end of the program that had it loaded.
DWORD take_away_patiently(const std::wstring& folder, std::wstring* stays) {
  install_record record;
  for (int i = 1;; ++i) {
    if (!read_record(folder, &record) || !record.for_a_run) return ERROR_SUCCESS;
    const DWORD error = take_libraries_away(folder, record, stays);
    if (error != ERROR_ACCESS_DENIED || i == deletion_tries) return error;
    Sleep(deletion_pause_ms);
  }
}

}  // namespace

bool enter_folder(const std::wstring& folder, bool keep, run_folder* entered, std::wstring* problem) {
  *entered = {folder, false, INVALID_HANDLE_VALUE};
  if (finds_wrapper(folder)) return true;
  *problem = folder_problem(folder);
  if (!problem->empty()) return false;
  const HANDLE lock = lock_folder(folder, what_to_do_once, problem);
  if (!lock) return false;
  if (place_libraries(folder, !keep, problem)) {
    entered->is_visited = true;
    entered->use = hold(in_folder(folder, wrapper_file));
  }
  CloseHandle(lock);
  return entered->is_visited;
}

void leave_folder(const run_folder& entered) {
  if (!entered.is_visited) return;
  std::wstring stays, problem;
  const HANDLE lock = lock_folder(entered.folder, what_to_do_once, &problem);
  CloseHandle(entered.use);
  if (!lock) return complain(problem);
  const DWORD error = take_away_patiently(entered.folder, &stays);
  CloseHandle(lock);
  // Another run holds them, and takes them away.
  if (error == ERROR_SUCCESS || error == ERROR_SHARING_VIOLATION) return;
  complain(stays +
           L" is still in use and stays; the next \"oswctl run\" in that folder, or \"oswctl remove\", takes it away");
}
