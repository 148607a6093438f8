// The libraries in the folder of a program that is run: they are there already, or they come for the time of the run.
#pragma once

#include <windows.h>

#include <string>

struct run_folder {
  std::wstring folder;
  bool is_visited;  // libraries that were placed for a run stand there
  HANDLE use;       // keeps them there
};

// Sees that the libraries are in the program's folder. Where they are not, or are there for another run, they are
// placed; with `keep`, they stay for good. False, with a sentence in `*problem`, when that cannot be done.
bool enter_folder(const std::wstring& folder, bool keep, run_folder* entered, std::wstring* problem);

// Takes the libraries away again that are there for a run, unless another run goes on with them. This process must not
// have them loaded.
void leave_folder(const run_folder& entered);
