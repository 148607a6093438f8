// What this program does when a test has it started by oswctl. The first argument is the role:
//
//   arguments FILE ...           writes its further arguments to FILE, one a line
//   status NUMBER                ends with that exit status
//   state FILE                   loads opengl32.dll as a program does, and writes what holds in it: see state_report
//   variable FILE NAME           writes what the environment variable NAME holds, or "none"
//   later FILE READY GO          makes the file READY, waits for the file GO, and does as state
//   wait READY GO NUMBER         makes the file READY, waits for the file GO, and ends with that exit status
//   stubborn READY GO NUMBER     the same, and a Ctrl-C only makes the file READY.interrupted
//   yielding READY GO NUMBER     the same, and a Ctrl-C ends it with status 33
//   install UNTIL FOLDER         does what oswctl install does, and ends after so many of its steps with status 77
//   remove UNTIL FOLDER          the same with oswctl remove
//   draw READY GO                draws into a window by opengl32.dll, makes the file READY and waits for the file GO
//   interrupter READY ...        starts the rest of its command line, and presses Ctrl-C once READY exists
#pragma once

#include <string>
#include <vector>

// Plays a role, and gives its exit status; -1 when the arguments name none.
long long play_role(const std::vector<std::wstring>& arguments);

// The line that the role "state" writes: whether the feature is on, the words of the list in force, those of the nine
// options that are set.
std::string state_report();
