// The command line of oswctl, read but not yet acted on.
#pragma once

#include <string>
#include <vector>

enum class command { help, run, options, set, reset, check, install, remove, probe };

struct run_request {
  int parts;                       // 2 or 4; 0 leaves the options about splitting alone
  bool side_by_side, stacked;      // --horizontal, --vertical; at most one is set
  std::wstring list;               // the caller's application list, empty when one is to be written
  std::wstring program;            // as the caller wrote it
  std::vector<std::wstring> args;  // the program's arguments, untouched
};

struct request {
  command what;
  run_request run;
  std::wstring option, value;  // set
  std::wstring folder;         // check, install, remove
  std::wstring library;        // probe
  std::wstring help;           // help: the text to print
};

// Reads the arguments, without the program's own name. False, with the reason in `*problem`, when they make no sense.
bool read_command_line(const std::vector<std::wstring>& arguments, request* result, std::wstring* problem);
