#include "install.h"

#include "folder.h"
#include "folder_lock.h"
#include "paths.h"
#include "placing.h"
#include "text.h"

namespace {

constexpr wchar_t as_administrator[] = L"run oswctl as administrator";

int remove_from_locked(const std::wstring& folder) {
  install_record record;
  if (!read_record(folder, &record)) {
    return fail(status_failed,
                in_folder(folder, record_file) + L" is not of oswctl's making, so nothing in that folder is touched");
  }
  if (record.placed.empty() && delete_unfinished_record(folder)) {
    say(L"took away what an install that did not come to its end had left in " + folder);
    return status_ok;
  }
  if (record.placed.empty()) return fail(status_failed, L"oswctl has placed nothing in " + folder);

  int status = status_ok;
  for (const wchar_t* name : library_files) {
    if (owner_of(record.placed, folder, name) != file_owner::somebody_else) continue;
    status = fail(status_failed, in_folder(folder, name) + L" is not the file that oswctl placed, and stays");
  }
  std::wstring stays;
  const DWORD error = take_libraries_away(folder, record, &stays);
  if (error != ERROR_SUCCESS) return fail(status_failed, write_problem(stays, error));
  if (status == status_ok) say(L"took opengl32.dll and opengl32sys.dll away from " + folder);
  return status;
}

}  // namespace

int install_libraries(const std::wstring& named_folder) {
  const std::wstring folder = full_path(named_folder);
  std::wstring problem = name_problem(named_folder);
  if (problem.empty()) problem = folder_problem(folder);
  if (!problem.empty()) return fail(status_wrong_input, problem);
  const HANDLE lock = lock_folder(folder, as_administrator, &problem);
  if (!lock) return fail(status_failed, problem);
  const bool is_done = place_libraries(folder, false, &problem);
  CloseHandle(lock);
  if (!is_done) return fail(status_failed, problem);
  say(L"placed opengl32.dll and opengl32sys.dll in " + folder);
  return status_ok;
}

int remove_libraries(const std::wstring& named_folder) {
  std::wstring problem = name_problem(named_folder);
  if (!problem.empty()) return fail(status_wrong_input, problem);
  const std::wstring folder = full_path(named_folder);
  const HANDLE lock = lock_folder(folder, as_administrator, &problem);
  if (!lock) return fail(status_failed, problem);
  const int status = remove_from_locked(folder);
  CloseHandle(lock);
  return status;
}
