// The command check.
#pragma once

#include <string>

// Says on standard output whether `folder` has all that a program in it needs, file by file and by drawing a picture on
// each path. Gives the status that the program ends with.
int check(const std::wstring& folder);
