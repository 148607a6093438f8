// The registry key that the library reads its options from, in the registry of the 64-bit programs.
#pragma once

#include <windows.h>

#include <vector>

#include "option_list.h"

// A value as it stands in the registry, whatever its type.
struct stored_value {
  bool present;
  DWORD type;
  std::vector<BYTE> data;
};

// All of these give a Windows error code, ERROR_SUCCESS when done. A missing key or value is no error: it reads as not
// present.
LSTATUS read_stored(const wchar_t* name, stored_value* value);

// Sets an option, and keeps what was there before it was first set, for take_back.
LSTATUS set_number(const wchar_t* name, uint32_t number);

// Puts back what set_number has found, most often nothing. An option that somebody has set otherwise stays as it is,
// and `*stays` tells so.
LSTATUS take_back(const wchar_t* name, bool* stays);

// Deletes the option's value, whoever has set it.
LSTATUS delete_option(const wchar_t* name);

// Removes our keys, and the vendor's above them, as far as nothing is left in them.
void remove_empty_keys();

// The number that the library would take from the value: false when it would take none and the default holds.
bool number_of(const stored_value& value, uint32_t* number);

enum class option_source { fallback, registry, environment };

// What holds for the option in a program that is started from here, read as the library reads it.
uint32_t value_in_force(const option& option, option_source* source);

// A sentence for an error of the functions above.
std::wstring registry_problem(LSTATUS error);
