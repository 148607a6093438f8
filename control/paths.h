// Names of files and folders.
#pragma once

#include <windows.h>

#include <string>

// The path of a library that is loaded in this process.
std::wstring path_of_module(HMODULE module);

// The path of oswctl.exe.
std::wstring own_path();

// The folder of oswctl.exe, with a backslash at its end: the libraries that install places stand there.
std::wstring own_folder();

// The path of a file in a folder.
std::wstring in_folder(const std::wstring& folder, const std::wstring& file);

// The library keeps names and paths in so many bytes, with a zero at the end.
constexpr size_t library_path_size = 260;

// In characters.
constexpr size_t longest_path = library_path_size - 1;

bool file_exists(const std::wstring& path);
bool folder_exists(const std::wstring& path);

// The same path in plain letters; empty where the volume keeps no short names, or where nothing is there.
std::wstring short_path(const std::wstring& path);

// The path from the root, as the current folder has it; `path` itself if Windows cannot tell.
std::wstring full_path(const std::wstring& path);
