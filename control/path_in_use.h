// How the parts of a running program are drawn.
#pragma once

#include <windows.h>

#include <string>

// In words. Empty when its driver does not tell, or has nothing to tell yet.
std::wstring path_in_use(DWORD process);
