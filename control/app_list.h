// The application list: the file that names, separated by white space, the programs that the feature is on for.
#pragma once

#include <string>

#include "program.h"

// A list as the library is told of it.
struct app_list {
  std::wstring path;
  std::string ansi_path;  // the form that the library takes
  bool is_ours;           // written by make_app_list
};

// True when the library can find the program in a list at all; else a sentence in `*problem` says why not.
bool can_be_listed(const program& target, std::wstring* problem);

// Writes a list with just the one program, which can be listed, into the folder for temporary files. False, with a
// sentence in `*problem`, when the file cannot be written.
bool make_app_list(const program& target, app_list* list, std::wstring* problem);

// Takes a list of the caller's. False, with a sentence in `*problem`, when the library could not use the file.
bool take_app_list(const std::wstring& path, app_list* list, std::wstring* problem);

// True when the library will find the program in the list.
bool list_has(const app_list& list, const program& target);

// Deletes the list if it is ours.
void drop_app_list(const app_list& list);
