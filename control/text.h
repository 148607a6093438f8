// Text is UTF-16 inside the program, as Windows keeps names, and UTF-8 on the way out.
#pragma once

#include <windows.h>

#include <string>

// What the program ends with, unless it passes on another program's status.
enum : int { status_ok = 0, status_failed = 1, status_wrong_input = 2 };

std::wstring from_utf8(const std::string& text);
std::string to_utf8(const std::wstring& text);
std::wstring from_ansi(const std::string& text);

// The same text in the machine's ANSI code page, which is what the library reads and compares names in, or in another.
// False, with `*result` untouched, when the code page lacks a character.
bool to_ansi(const std::wstring& text, std::string* result, UINT code_page = CP_ACP);

// Prints one line on standard output.
void say(const std::wstring& line);

// Prints one line, "oswctl: " and the sentence, on standard error. Line ends within the sentence become blanks.
void complain(const std::wstring& sentence);

// As complain, then gives `status` back, for the end of a command.
int fail(int status, const std::wstring& sentence);

// A place on the desktop: "800 x 600 at 20,30".
std::wstring describe(const RECT& area);

// Windows' own words for an error code, in brackets with a leading blank, ready to end a sentence.
std::wstring system_reason(DWORD error);
