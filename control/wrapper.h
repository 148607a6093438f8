// The wrapper library as the switch of the feature.
#pragma once

#include <windows.h>

#include <string>

// The copy of opengl32.dll that a program in `program_folder` will load: a shared section belongs to one file, so that
// the feature has to be switched on in just that copy. The order is the loader's: the program's folder, the system's
// folders, the current folder, PATH. Empty when there is none.
std::wstring find_wrapper(const std::wstring& program_folder);

struct wrapper {
  HMODULE module;
  void* (*enable)(const char* list_path);
  void (*disable)();
  const char* list_in_force;  // the shared copy of the path given to enable; null before that
};

// Loads the library at `path` into this process, where it stays for as long as the feature is to be on. What makes a
// process wait at the load is taken out of our own environment for good. False, with a sentence in `*problem`, when it
// cannot be done.
//
// The library is never freed, and this process has to end without telling its libraries (TerminateProcess): what the
// library does at a detach is made for programs that render, and starts with loading the driver.
bool load_wrapper(const std::wstring& path, wrapper* loaded, std::wstring* problem);

// Switches the feature on, for processes that load the library from now on and are named in the list `now`. Where we
// have switched it on before, with the list `before`, and somebody else has put theirs in its place, theirs stays.
void replace_list(wrapper* loaded, const std::string& before, const std::string& now);

// Switches it off, unless the list in force is another than `before`.
void disable_wrapper(wrapper* loaded, const std::string& before);
