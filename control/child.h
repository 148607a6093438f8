// Starting another program.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

// One command line out of a program's name and its arguments, such that the C runtime of the program takes them apart
// into exactly the same again.
std::wstring join_arguments(const std::wstring& program, const std::vector<std::wstring>& arguments);

// Starts the program at `path` with our standard handles, but that it prints to `output` where that is not null.
// `environment` is a block as GetEnvironmentStringsW gives it, or null for our own. Gives the process, which the caller
// closes, or null with the error in GetLastError.
HANDLE start_child(const std::wstring& path, std::wstring command_line, wchar_t* environment, HANDLE output);

// Sets an option in our environment, which the programs inherit that we start.
void set_option_for_children(const wchar_t* option, int value);
