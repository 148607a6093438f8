// Starting oswctl, and what it says.
#pragma once

#include <windows.h>

#include <string>

struct outcome {
  DWORD status;  // 0xDEAD when it had to be ended after 60 seconds
  std::wstring out, err;
};

// Starts oswctl.exe of here().tool with the command line `line` after its name, with here().work as the current folder,
// and waits for its end.
outcome run_tool(const std::wstring& line);

// The same in two halves.
struct running_tool {
  HANDLE process;
  std::wstring out_file, err_file;
};
running_tool start_tool(const std::wstring& line);
running_tool start_program(const std::wstring& line);  // here().program in a role, in place of the tool
outcome finish_tool(const running_tool& running);

// The same under a console of its own, without a window, in which Ctrl-C is pressed as soon as the file `ready` exists.
running_tool start_tool_and_interrupt(const std::wstring& line, const std::wstring& ready);

// One line of the tool's own, and nothing else.
bool is_one_sentence(const std::wstring& err);

bool contains(const std::wstring& text, const std::wstring& part);

std::wstring quoted(const std::wstring& text);
