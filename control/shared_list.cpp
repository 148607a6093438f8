#include "shared_list.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "app_list.h"
#include "files.h"
#include "paths.h"
#include "text.h"

namespace {

constexpr DWORD lock_patience_ms = 10000;
constexpr size_t longest_run_table = 64;

struct run_slot {
  DWORD process;  // 0: free
  FILETIME started;
  char name[library_path_size], own_list[library_path_size];
};

}  // namespace

struct run_table {
  char path[library_path_size];      // of the list that is written for several runs, or for one without its own
  char in_force[library_path_size];  // the list that the library was last told of
  run_slot slots[longest_run_table];
};

namespace {

// The library's switch belongs to its file, under whichever name it is loaded.
bool identify_file(const std::wstring& path, std::wstring* identity) {
  const HANDLE file = CreateFileW(path.c_str(), 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                  OPEN_EXISTING, 0, nullptr);
  BY_HANDLE_FILE_INFORMATION information{};
  const bool done = file != INVALID_HANDLE_VALUE && GetFileInformationByHandle(file, &information);
  if (file != INVALID_HANDLE_VALUE) CloseHandle(file);
  wchar_t text[32] = L"";
  swprintf(text, std::size(text), L"%08lx%08lx%08lx", information.dwVolumeSerialNumber, information.nFileIndexHigh,
           information.nFileIndexLow);
  *identity = text;
  return done;
}

FILETIME start_of(HANDLE process) {
  FILETIME started{}, other{};
  GetProcessTimes(process, &started, &other, &other, &other);
  return started;
}

// A number of a process that has ended may be another's by now, and a process that somebody holds a handle of is found
// after its end.
bool goes_on(const run_slot& run) {
  if (run.process == 0) return false;
  const HANDLE process = OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION | SYNCHRONIZE, FALSE, run.process);
  if (!process) return GetLastError() == ERROR_ACCESS_DENIED;
  const FILETIME started = start_of(process);
  const bool is_same = CompareFileTime(&started, &run.started) == 0;
  const bool has_ended = WaitForSingleObject(process, 0) == WAIT_OBJECT_0;
  CloseHandle(process);
  return is_same && !has_ended;
}

std::vector<run_slot*> living_runs(run_table* runs) {
  std::vector<run_slot*> living;
  for (run_slot& slot : runs->slots) {
    if (goes_on(slot)) {
      living.push_back(&slot);
    } else {
      slot = {};
    }
  }
  return living;
}

void copy_text(char* to, const std::string& text) {
  memset(to, 0, library_path_size);
  text.copy(to, library_path_size - 1);
}

void add_word(std::vector<std::string>* words, const std::string& word) {
  if (std::find(words->begin(), words->end(), word) == words->end()) words->push_back(word);
}

std::vector<std::string> words_for(const std::vector<run_slot*>& living) {
  std::vector<std::string> words;
  for (const run_slot* run : living) {
    if (!run->own_list[0]) add_word(&words, run->name);
    for (const std::string& word : words_of_list(run->own_list)) add_word(&words, word);
  }
  return words;
}

// Writes over what is there and cuts it off after that: whoever reads meanwhile finds each name that stays. A list that
// stays as it is is not touched: a reader has found half a line while it was written anew.
bool write_list(const char* path, const std::vector<std::string>& words) {
  if (words_of_list(path) == words) return true;
  std::string text;
  for (const std::string& word : words) text += word + "\r\n";
  const HANDLE file = CreateFileA(path, GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_ALWAYS,
                                  FILE_ATTRIBUTE_NORMAL, nullptr);
  return write_and_close(file, text);
}

// Lets the list that is in force, and the file, follow the runs that go on. False, with the error in GetLastError, when
// the file cannot be written.
bool settle(shared_list* list) {
  run_table* const runs = list->runs;
  const std::vector<run_slot*> living = living_runs(runs);
  const bool is_written = living.size() > 1 || (living.size() == 1 && !living[0]->own_list[0]);
  if (is_written && !write_list(runs->path, words_for(living))) return false;
  const std::string before = runs->in_force;
  copy_text(runs->in_force, living.empty() ? "" : is_written ? runs->path : living[0]->own_list);
  if (living.empty()) {
    disable_wrapper(list->library, before);
  } else if (before != runs->in_force || !list->library->list_in_force) {
    replace_list(list->library, before, runs->in_force);
  }
  if (!is_written) DeleteFileA(runs->path);
  return true;
}

bool take_lock(HANDLE lock) {
  const DWORD result = WaitForSingleObject(lock, lock_patience_ms);
  return result == WAIT_OBJECT_0 || result == WAIT_ABANDONED;
}

bool open_table(const std::wstring& identity, shared_list* list, std::wstring* problem) {
  list->lock = CreateMutexW(nullptr, FALSE, (L"Local\\oswctl lock " + identity).c_str());
  if (list->lock) {
    list->memory = CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, sizeof(run_table),
                                      (L"Local\\oswctl runs " + identity).c_str());
  }
  if (list->memory) list->runs = static_cast<run_table*>(MapViewOfFile(list->memory, FILE_MAP_WRITE, 0, 0, 0));
  if (list->runs) return true;
  *problem = L"the list of what other runs have started cannot be opened" + system_reason(GetLastError()) +
             L"; wait for their end if they are run as administrator";
  return false;
}

run_slot* free_slot(run_table* runs) {
  for (run_slot& slot : runs->slots) {
    if (slot.process == 0) return &slot;
  }
  return nullptr;
}

bool add_run(shared_list* list, const listing& wanted, const std::string& path, std::wstring* problem) {
  const bool is_first = living_runs(list->runs).empty();
  run_slot* const slot = free_slot(list->runs);
  if (!slot) {
    *problem = L"64 programs are run with this copy of the library already; wait for one to end";
    return false;
  }
  // The folder for temporary files may be another for the next run.
  if (is_first) {
    copy_text(list->runs->path, path);
    copy_text(list->runs->in_force, "");
  }
  copy_text(slot->name, wanted.name);
  copy_text(slot->own_list, wanted.own_list);
  slot->started = start_of(GetCurrentProcess());
  slot->process = GetCurrentProcessId();
  if (settle(list)) return true;
  *problem =
      L"the application list " + from_ansi(list->runs->path) + L" cannot be written" + system_reason(GetLastError());
  *slot = {};
  settle(list);
  return false;
}

}  // namespace

bool join_runs(const std::wstring& library_path, wrapper* library, const listing& wanted, shared_list* list,
               std::wstring* problem) {
  *list = {library, nullptr, nullptr, nullptr};
  std::wstring identity;
  std::string path;
  if (!identify_file(library_path, &identity)) {
    *problem = library_path + L" cannot be opened" + system_reason(GetLastError());
    return false;
  }
  if (!temporary_list(L"oswctl-" + identity + L".txt", &path, problem) || !open_table(identity, list, problem)) {
    return false;
  }
  if (!take_lock(list->lock)) {
    *problem = L"another oswctl run does not answer; end it and try again";
    list->runs = nullptr;
    return false;
  }
  const bool done = add_run(list, wanted, path, problem);
  ReleaseMutex(list->lock);
  if (!done) list->runs = nullptr;
  return done;
}

void leave_runs(shared_list* list) {
  if (!list->runs || !take_lock(list->lock)) return;
  for (run_slot& slot : list->runs->slots) {
    if (slot.process == GetCurrentProcessId()) slot = {};
  }
  settle(list);
  ReleaseMutex(list->lock);
  list->runs = nullptr;
}
