// Placing the libraries in a folder and taking them away. What is called here changes the folder, and wants its lock.
#pragma once

#include <windows.h>

#include <string>

#include "install_record.h"
#include "libraries.h"

inline constexpr const wchar_t* library_files[] = {wrapper_file, driver_file};

enum class file_owner { nobody, oswctl, somebody_else };

// Whose the file of that name is, going by what is on record. What cannot be read counts as somebody else's.
file_owner owner_of(const std::vector<placed_file>& placed, const std::wstring& folder, const wchar_t* name);

// Places both libraries from beside oswctl.exe, or replaces older ones, and has that on record, be it for a run or to
// stay. False, with a sentence in `*problem`, when it cannot be done: a folder that had none has none then.
bool place_libraries(const std::wstring& folder, bool for_a_run, std::wstring* problem);

// Takes away what of the record still is as it was placed, the wrapper first, and last the record. Gives
// ERROR_SUCCESS, or the error of the first file that stays, in `*stays`; nothing behind it is touched then.
DWORD take_libraries_away(const std::wstring& folder, const install_record& record, std::wstring* stays);

// A sentence for a file or folder that could not be written or deleted.
std::wstring write_problem(const std::wstring& path, DWORD error);
