// What this program does when a test has it started by oswctl. The first argument is the role:
//
//   arguments FILE ...           writes its further arguments to FILE, one a line
//   status NUMBER                ends with that exit status
//   state FILE                   loads opengl32.dll as a program does, and writes what holds in it: see state_report
//   wait READY GO NUMBER         makes the file READY, waits for the file GO, and ends with that exit status
//   stubborn READY GO NUMBER     the same, and a Ctrl-C only makes the file READY.interrupted
//   yielding READY GO NUMBER     the same, and a Ctrl-C ends it with status 33
//   interrupter READY ...        starts the rest of its command line, and presses Ctrl-C once READY exists
#pragma once

#include <string>
#include <vector>

// Plays a role, and gives its exit status; -1 when the arguments name none.
long long play_role(const std::vector<std::wstring>& arguments);

// The line that the role "state" writes: whether the feature is on, the words of the list in force, the nine options.
std::string state_report();
