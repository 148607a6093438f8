// The programs of a folder that the libraries are to stand in.
#pragma once

#include <string>

// What is wrong with a folder that the caller has named, as a sentence; empty when it is there and its programs can be
// served.
std::wstring name_problem(const std::wstring& folder);

// Why the libraries do not belong into the folder, as a sentence; empty when nothing speaks against it. A program of
// another kind than theirs cannot load them, and would no longer start. One that does without OpenGL never looks for
// them, so that it counts only where it is alone.
std::wstring folder_problem(const std::wstring& folder);
