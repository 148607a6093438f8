// The application list of all runs that go on with one copy of the wrapper. The library knows one list and one switch,
// so that runs which each had their own would take each other's program off.
#pragma once

#include <windows.h>

#include <string>

#include "wrapper.h"

// What one run wants listed.
struct listing {
  std::string name;      // the program's name, as the library compares it
  std::string own_list;  // the path of the caller's list, empty when the name alone is wanted
};

struct run_table;

struct shared_list {
  wrapper* library;
  HANDLE lock, memory;
  run_table* runs;  // in memory that the runs share: nothing of it is left when the last of them has ended, however
};

// Adds the run to those of the wrapper's file at `library_path`, and switches the feature on for all of them. False,
// with a sentence in `*problem`, when it cannot be done; nothing is changed then.
bool join_runs(const std::wstring& library_path, wrapper* library, const listing& wanted, shared_list* list,
               std::wstring* problem);

// Takes this process's run off again, and switches the feature off with the last one, unless somebody else has switched
// it on with another list. Does nothing after a join that failed.
void leave_runs(shared_list* list);
