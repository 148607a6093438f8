// The commands options, set and reset. Each gives the status that the program ends with.
#pragma once

#include <string>

int print_options();
int set_option(const std::wstring& name, const std::wstring& value);

// Takes back what set has done or, with `all`, deletes every option.
int reset_options(bool all);
