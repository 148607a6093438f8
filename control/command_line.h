// The command line of oswctl, read but not yet acted on.
#pragma once

#include <string>
#include <vector>

enum class command { text, run, start, status, list, options, set, reset, check, install, remove, probe };

struct run_request {
  int parts;                       // 2 or 4; 0 leaves the options about splitting alone
  bool side_by_side, stacked;      // --horizontal, --vertical; at most one is set
  bool keep;                       // what is placed for the run stays
  bool basic;                      // the program is started in the basic mode, not in the extended one
  std::wstring list;               // the caller's application list, empty when one is to be written
  std::wstring program;            // as the caller wrote it
  std::vector<std::wstring> args;  // the program's arguments, untouched
  std::vector<std::wstring> own;   // what stands before the program
};

struct request {
  command what;
  run_request run;
  std::wstring option, value;    // set
  bool all;                      // reset
  std::wstring folder;           // check, install, remove
  std::wstring driver, wrapper;  // probe; the wrapper may be empty
  std::wstring text;             // text: what to print
};

// Reads the arguments, without the program's own name. False, with the reason in `*problem`, when they make no sense.
bool read_command_line(const std::vector<std::wstring>& arguments, request* result, std::wstring* problem);
