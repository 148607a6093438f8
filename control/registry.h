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
LSTATUS write_number(const wchar_t* name, uint32_t number);

// Writes the value back as it was read, or deletes it when it was not present.
LSTATUS write_stored(const wchar_t* name, const stored_value& value);

// Removes our key, and the vendor's above it, as far as nothing is left in them.
void remove_empty_keys();

// The number that the library would take from the value: false when it would take none and the default holds.
bool number_of(const stored_value& value, uint32_t* number);

// What holds for the option, read as the library reads it; `*is_set` tells whether it comes from the registry.
uint32_t value_in_force(const option& option, bool* is_set);

// A sentence for an error of the functions above.
std::wstring registry_problem(LSTATUS error);
