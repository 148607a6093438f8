// The two files that make up the wrapper on a machine.
#pragma once

#include <string>

inline constexpr wchar_t wrapper_file[] = L"opengl32.dll";
inline constexpr wchar_t driver_file[] = L"opengl32sys.dll";

// What is wrong with the file as our library, or as the system library under it, as a sentence with what to do; empty
// when nothing is. Only the file is read, nothing of it is run.
std::wstring wrapper_problem(const std::wstring& path);
std::wstring driver_problem(const std::wstring& path);
