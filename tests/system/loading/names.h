// The functions that the library knows.
#pragma once

#include <string>
#include <vector>

// Of both op lists, in op order, wgl first.
const std::vector<std::string>& all_names();

// What the library exports: the platform's names in the order of their ordinals, which start at 1, and then its own.
std::vector<std::string> exported_names();
constexpr int platform_names = 368;
