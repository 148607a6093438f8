// Where a test takes place: folders of its own, as they would be on a machine with oswctl and one program.
#pragma once

#include <string>

#include "standin.h"

struct place {
  std::wstring root;
  std::wstring tool;  // oswctl.exe and both libraries
  std::wstring app;   // program.exe, which is this program in a role of roles.h, and both libraries
  std::wstring temp;  // the folder for temporary files
  std::wstring work;  // the current folder of what is started, empty
  std::wstring program;
};

// The place of the running test.
const place& here();

// Makes the place anew, with no option set in the registry.
void enter_place();

// Puts the real libraries, which have to be beside this program, into a folder.
void place_real_libraries(const std::wstring& folder);

// Leaves nothing of it.
void leave_place();

// Holds the program's copy of the wrapper loaded, so that its shared section outlives the processes that a test starts.
const standin_state* hold_wrapper(const std::wstring& folder);
