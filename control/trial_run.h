// What a process that tries libraries out has found.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

struct trial_run {
  std::wstring problem;  // a sentence with what to do; empty when all was as it should be
  std::wstring host, version, renderer;
  int parts;                          // 0: the window had none
  bool has_fast_switch;               // told of the driver alone
  std::vector<std::wstring> reports;  // of the driver
};

// Has the driver drawn by, in another process. Neither library is loaded in this one.
trial_run try_driver(const std::wstring& driver);

// Has the wrapper drawn by over that driver, for a process with our program's name and our environment.
trial_run try_wrapper(const std::wstring& driver, const std::wstring& wrapper);
