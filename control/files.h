// Changes of files. All that oswctl changes in a program's folder it changes by these, one step after the other.
#pragma once

#include <windows.h>

#include <string>

// Called after each step of the functions below, on their thread; null, but where a test wants to end the process
// there.
extern void (*after_file_step)();

// Each of these gives false, with the error in GetLastError, when it could not be done.

// Makes the text all that the file has, and closes it. The file is open for writing, or INVALID_HANDLE_VALUE.
bool write_and_close(HANDLE file, const std::string& text);

// Writes a file anew.
bool write_file(const std::wstring& path, const std::string& text);

// Copies a file to a path where there is none, without a write protection.
bool copy_file(const std::wstring& from, const std::wstring& to);

// Moves a file within its volume, over another if `flags` has MOVEFILE_REPLACE_EXISTING. Who reads the other, a scanner
// say, is given a second to be done.
bool move_file(const std::wstring& from, const std::wstring& to, DWORD flags);

bool delete_file(const std::wstring& path);

// Makes a file that is there as long as the handle, and that nobody else can open. INVALID_HANDLE_VALUE, with the error
// in GetLastError, when that cannot be.
HANDLE hold_file_of_our_own(const std::wstring& path);
