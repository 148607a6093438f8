// Who changes the libraries of a folder has the folder to himself meanwhile.
#pragma once

#include <windows.h>

#include <string>

// Waits, up to ten seconds, until no other oswctl changes the folder. Gives what CloseHandle gives back, and the end of
// this process too. Null, with a sentence in `*problem`, when it cannot be had; `when_denied` is what the sentence ends
// with, as something to do, where this user may not write to the folder.
HANDLE lock_folder(const std::wstring& folder, const wchar_t* when_denied, std::wstring* problem);
