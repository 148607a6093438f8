#include "placing.h"

#include "files.h"
#include "paths.h"
#include "text.h"

namespace {

// A program that starts meanwhile may find the driver alone, which nothing asks for, but never the wrapper alone, which
// does not work without it.
const wchar_t* const placing_order[] = {driver_file, wrapper_file};
const wchar_t* const taking_order[] = {wrapper_file, driver_file};

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
  delete_file(unfinished(folder, name));
}

// Copies a library into the folder in one step, so that no half of it ever stands there under its name.
DWORD place(const std::wstring& folder, const wchar_t* name, file_owner owner) {
  const std::wstring path = in_folder(folder, name), fresh = unfinished(folder, name);
  const DWORD flags = owner == file_owner::oswctl ? MOVEFILE_REPLACE_EXISTING : 0;
  drop_unfinished(folder, name);
  if (copy_file(own_folder() + name, fresh) && move_file(fresh, path, flags)) return ERROR_SUCCESS;
  const DWORD error = GetLastError();
  drop_unfinished(folder, name);
  return error;
}

// Reads the record, and refuses a folder in which a file of somebody else's is in the way.
bool look_before_placing(const std::wstring& folder, install_record* record, std::wstring* problem) {
  if (!read_record(folder, record)) {
    *problem = in_folder(folder, record_file) + L" is not of oswctl's making; move it away and try again";
    return false;
  }
  for (const wchar_t* name : library_files) {
    if (owner_of(record->placed, folder, name) != file_owner::somebody_else) continue;
    *problem = in_folder(folder, name) + L" is there already and was not placed by oswctl; move it away and try again";
    return false;
  }
  return true;
}

// Places what is not there yet. Gives the error, with the file in `*path`, of the first that cannot be placed.
DWORD place_missing(const std::wstring& folder, const std::vector<placed_file>& sources,
                    const std::vector<placed_file>& on_record, std::wstring* path) {
  for (const wchar_t* name : placing_order) {
    // What is there already may well be in use.
    if (owner_of(sources, folder, name) == file_owner::oswctl) continue;
    *path = in_folder(folder, name);
    const DWORD error = place(folder, name, owner_of(on_record, folder, name));
    if (error != ERROR_SUCCESS) return error;
  }
  return ERROR_SUCCESS;
}

}  // namespace

file_owner owner_of(const std::vector<placed_file>& placed, const std::wstring& folder, const wchar_t* name) {
  const std::wstring path = in_folder(folder, name);
  file_print print;
  if (GetFileAttributesW(path.c_str()) == INVALID_FILE_ATTRIBUTES) return file_owner::nobody;
  const bool is_ours = take_print(path, &print) && has_placed(placed, to_utf8(name), print);
  return is_ours ? file_owner::oswctl : file_owner::somebody_else;
}

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

bool place_libraries(const std::wstring& folder, bool for_a_run, std::wstring* problem) {
  std::vector<placed_file> sources;
  install_record before;
  if (!take_sources(&sources, problem) || !look_before_placing(folder, &before, problem)) return false;
  // What was placed to stay does so.
  for_a_run &= before.placed.empty() || before.for_a_run;
  // Old and new are both on record before the first file changes, so that whatever ends this in the middle leaves
  // nothing that a later install or remove would not know.
  install_record both{for_a_run, before.placed};
  both.placed.insert(both.placed.end(), sources.begin(), sources.end());
  std::wstring path = in_folder(folder, record_file);
  DWORD error = write_record(folder, both) ? place_missing(folder, sources, both.placed, &path) : GetLastError();
  if (error == ERROR_SUCCESS && write_record(folder, {for_a_run, sources})) return true;
  if (error == ERROR_SUCCESS) {
    error = GetLastError();
    path = in_folder(folder, record_file);
  }
  *problem = write_problem(path, error);
  // What was there before can be placed again.
  std::wstring stays;
  if (before.placed.empty()) take_libraries_away(folder, both, &stays);
  return false;
}

DWORD take_libraries_away(const std::wstring& folder, const install_record& record, std::wstring* stays) {
  for (const wchar_t* name : taking_order) {
    drop_unfinished(folder, name);
    if (owner_of(record.placed, folder, name) != file_owner::oswctl) continue;
    *stays = in_folder(folder, name);
    if (!delete_file(*stays)) return GetLastError();
  }
  *stays = in_folder(folder, record_file);
  return delete_record(folder) ? ERROR_SUCCESS : GetLastError();
}
