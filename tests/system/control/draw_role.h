// A program that draws, as oswctl may start one.
#pragma once

#include <string>

// Draws into a window by opengl32.dll, makes the file `ready` and waits for the file `go`. Result: the exit status.
long long draw_and_wait(const std::wstring& ready, const std::wstring& go);
