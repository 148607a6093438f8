// The command check.
#pragma once

#include <string>

// Says on standard output, file by file, whether `folder` has all that a program in it needs. Gives the status that the
// program ends with.
int check(const std::wstring& folder);
