// The application list: the file that names, separated by white space, the programs that the feature is on for.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

#include "program.h"

// The program's name as the library compares it, in the machine's code page. False, with a sentence in `*problem`, when
// the library cannot find it in any list.
bool listed_name(const program& target, std::string* name, std::wstring* problem, UINT code_page = CP_ACP);

// The path of a file of that name in the folder for temporary files, as the library takes it. False, with a sentence in
// `*problem`, when there is no such form.
bool temporary_list(const std::wstring& name, std::string* path, std::wstring* problem);

// Takes a list of the caller's, and gives its path as the library takes it. False, with a sentence in `*problem`, when
// the library could not use the file.
bool take_app_list(const std::wstring& path, std::string* path_for_library, std::wstring* problem);

// The names in a list; none when it cannot be read.
std::vector<std::string> words_of_list(const std::string& path);

// True when the library will find the program in the list.
bool list_has(const std::string& path, const program& target);
