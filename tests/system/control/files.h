// Files and folders of the tests.
#pragma once

#include <map>
#include <string>

bool exists(const std::wstring& path);
std::string read_bytes(const std::wstring& path);
void write_bytes(const std::wstring& path, const std::string& bytes);
void make_folder(const std::wstring& path);

// Everything in a folder and the folders in it, as contents by name.
std::map<std::wstring, std::string> folder_contents(const std::wstring& folder);

// Deletes a folder with all that is in it.
void delete_folder(const std::wstring& folder);

// The bytes of a program with fields of its headers changed.
std::string with_machine(std::string program, unsigned short machine);
std::string with_subsystem(std::string program, unsigned short subsystem);
std::string as_library(std::string program);

// Deletes a program as soon as it has ended, for a running one's file cannot be deleted. Waits up to 20 seconds. Gives
// whether it is gone.
bool delete_when_ended(const std::wstring& program);

// Waits up to 20 seconds for a file to be there. Gives whether it is.
bool wait_for_file(const std::wstring& path);
