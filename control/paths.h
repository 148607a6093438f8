// Names of files and folders.
#pragma once

#include <string>

// The path of oswctl.exe.
std::wstring own_path();

// The folder of oswctl.exe, with a backslash at its end: the libraries that install places stand there.
std::wstring own_folder();

// The path of a file in a folder.
std::wstring in_folder(const std::wstring& folder, const std::wstring& file);

bool file_exists(const std::wstring& path);
bool folder_exists(const std::wstring& path);

// The path from the root, as the current folder has it; `path` itself if Windows cannot tell.
std::wstring full_path(const std::wstring& path);
