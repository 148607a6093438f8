// The commands install and remove. Each gives the status that the program ends with.
#pragma once

#include <string>

int install_libraries(const std::wstring& folder);
int remove_libraries(const std::wstring& folder);
