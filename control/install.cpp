#include "install.h"

#include <windows.h>

#include "install_record.h"
#include "libraries.h"
#include "paths.h"
#include "text.h"

namespace {

const wchar_t* const library_files[] = {wrapper_file, driver_file};
// A program that starts meanwhile may find the driver alone, which nothing asks for, but never the wrapper alone, which
// does not work without it.
const wchar_t* const placing_order[] = {driver_file, wrapper_file};
const wchar_t* const taking_order[] = {wrapper_file, driver_file};

enum class file_owner { nobody, oswctl, somebody_else };

// Whose the file at `path` is, going by the record of its folder. What cannot be read counts as somebody else's.
file_owner owner_of(const std::vector<placed_file>& placed, const std::wstring& folder, const wchar_t* name) {
  const std::wstring path = in_folder(folder, name);
  file_print print;
  if (GetFileAttributesW(path.c_str()) == INVALID_FILE_ATTRIBUTES) return file_owner::nobody;
  const bool is_ours = take_print(path, &print) && record_has(placed, to_utf8(name), print);
  return is_ours ? file_owner::oswctl : file_owner::somebody_else;
}

// A sentence for a file that could not be written or deleted.
std::wstring write_problem(const std::wstring& path, DWORD error) {
  switch (error) {
    case ERROR_SHARING_VIOLATION:
    case ERROR_USER_MAPPED_FILE:
      return path + L" is in use; end the program that uses it and try again";
    case ERROR_ACCESS_DENIED:
      return path + L" cannot be changed; end the program that uses it, or run oswctl as administrator";
    default:
      return path + L" cannot be changed" + system_reason(error);
  }
}

// The libraries to place, with their prints; false, with a sentence in `*problem`, when one is not as it must be.
bool take_sources(std::vector<placed_file>* sources, std::wstring* problem) {
  for (const wchar_t* name : library_files) {
    const std::wstring path = own_folder() + name;
    placed_file source{to_utf8(name), {}};
    if (!file_exists(path)) {
      *problem = path + L" is missing; both libraries have to be beside oswctl.exe to be placed elsewhere";
    } else {
      *problem = name == wrapper_file ? wrapper_problem(path) : driver_problem(path);
    }
    if (problem->empty() && !take_print(path, &source.print)) *problem = path + L" cannot be read";
    if (!problem->empty()) return false;
    sources->push_back(source);
  }
  return true;
}

// Where a library stands until it is whole. The record is older than the first such file, so that it is ours wherever
// there is a record.
std::wstring unfinished(const std::wstring& folder, const wchar_t* name) {
  return in_folder(folder, name) + L".oswctl-new";
}

void drop_unfinished(const std::wstring& folder, const wchar_t* name) {
  DeleteFileW(unfinished(folder, name).c_str());
}

// Copies a library into the folder in one step, so that no half of it ever stands there under its name.
DWORD place(const std::wstring& folder, const wchar_t* name, file_owner owner) {
  const std::wstring path = in_folder(folder, name), fresh = unfinished(folder, name);
  const DWORD flags = owner == file_owner::oswctl ? MOVEFILE_REPLACE_EXISTING : 0;
  drop_unfinished(folder, name);
  // A write-protected file of the same name would stop both calls.
  if (CopyFileW((own_folder() + name).c_str(), fresh.c_str(), TRUE) &&
      SetFileAttributesW(fresh.c_str(), FILE_ATTRIBUTE_NORMAL) && MoveFileExW(fresh.c_str(), path.c_str(), flags)) {
    return ERROR_SUCCESS;
  }
  const DWORD error = GetLastError();
  drop_unfinished(folder, name);
  return error;
}

// Deletes what of the record still is as it was placed, and what never was.
DWORD take_away(const std::vector<placed_file>& placed, const std::wstring& folder) {
  DWORD result = ERROR_SUCCESS;
  for (const wchar_t* name : taking_order) {
    drop_unfinished(folder, name);
    if (owner_of(placed, folder, name) != file_owner::oswctl) continue;
    if (!DeleteFileW(in_folder(folder, name).c_str())) result = GetLastError();
  }
  return result;
}

// Reads the record, and refuses a folder in which a file of somebody else's is in the way.
bool look_before_install(const std::wstring& folder, std::vector<placed_file>* placed, std::wstring* problem) {
  if (!read_record(folder, placed)) {
    *problem = in_folder(folder, record_file) + L" is not of oswctl's making; move it away and try again";
    return false;
  }
  for (const wchar_t* name : library_files) {
    if (owner_of(*placed, folder, name) != file_owner::somebody_else) continue;
    *problem = in_folder(folder, name) + L" is there already and was not placed by oswctl; move it away and try again";
    return false;
  }
  return true;
}

int place_all(const std::wstring& folder, const std::vector<placed_file>& placed,
              const std::vector<placed_file>& sources) {
  // Old and new are both on record before the first file changes, so that whatever ends this in the middle leaves
  // nothing that a later install or remove would not know.
  std::vector<placed_file> both = placed;
  both.insert(both.end(), sources.begin(), sources.end());
  if (!write_record(folder, both)) {
    return fail(status_failed, write_problem(in_folder(folder, record_file), GetLastError()));
  }
  for (const wchar_t* name : placing_order) {
    // What is there already may well be in use.
    if (owner_of(sources, folder, name) == file_owner::oswctl) continue;
    const DWORD error = place(folder, name, owner_of(both, folder, name));
    if (error == ERROR_SUCCESS) continue;
    const std::wstring problem = write_problem(in_folder(folder, name), error);
    // A first install leaves nothing; a later one leaves a folder that can be installed again.
    if (placed.empty() && take_away(sources, folder) == ERROR_SUCCESS) {
      delete_record(folder);
    }
    return fail(status_failed, problem);
  }
  if (!write_record(folder, sources)) {
    return fail(status_failed, write_problem(in_folder(folder, record_file), GetLastError()));
  }
  say(L"placed opengl32.dll and opengl32sys.dll in " + folder);
  return status_ok;
}

}  // namespace

int install_libraries(const std::wstring& named_folder) {
  if (!folder_exists(named_folder)) return fail(status_wrong_input, L"there is no folder " + named_folder);
  const std::wstring folder = full_path(named_folder);
  std::vector<placed_file> sources, placed;
  std::wstring problem;
  if (!take_sources(&sources, &problem) || !look_before_install(folder, &placed, &problem)) {
    return fail(status_failed, problem);
  }
  return place_all(folder, placed, sources);
}

int remove_libraries(const std::wstring& named_folder) {
  if (!folder_exists(named_folder)) return fail(status_wrong_input, L"there is no folder " + named_folder);
  const std::wstring folder = full_path(named_folder), record = in_folder(folder, record_file);
  std::vector<placed_file> placed;
  if (!read_record(folder, &placed)) {
    return fail(status_failed, record + L" is not of oswctl's making, so nothing in that folder is touched");
  }
  if (placed.empty() && delete_unfinished_record(folder)) {
    say(L"took away what an install that did not come to its end had left in " + folder);
    return status_ok;
  }
  if (placed.empty()) return fail(status_failed, L"oswctl has placed nothing in " + folder);

  int status = status_ok;
  for (const wchar_t* name : library_files) {
    if (owner_of(placed, folder, name) != file_owner::somebody_else) continue;
    status = fail(status_failed, in_folder(folder, name) + L" is not the file that oswctl placed, and stays");
  }
  const DWORD error = take_away(placed, folder);
  if (error != ERROR_SUCCESS) return fail(status_failed, write_problem(folder, error));
  if (!delete_record(folder)) return fail(status_failed, write_problem(record, GetLastError()));
  if (status == status_ok) say(L"took opengl32.dll and opengl32sys.dll away from " + folder);
  return status;
}
