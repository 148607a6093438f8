// The program that is to be started.
#pragma once

#include <string>

struct program {
  std::wstring path;    // from the root
  std::wstring folder;  // its folder, with a backslash at the end
  std::wstring name;    // its file name, which the library looks for in the application list
  bool uses_console;    // it shares our console, and so gets our Ctrl-C
};

// Finds the program that the caller means: a name without a folder is looked for in the current folder and then along
// PATH, and ".exe" may be left out. Only a 64-bit program is found. False, with a sentence in `*problem`, when there is
// none.
bool find_program(const std::wstring& given, program* found, std::wstring* problem);
