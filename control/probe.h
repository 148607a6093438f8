// Trying a driver out, in a process of its own, which a library that crashes or hangs may take down.
#pragma once

#include <string>

// In the process that wants to know: has the driver at `library` tried out. Empty when all of the driver's private
// entries answer, else a sentence with what to do.
std::wstring probe_problem(const std::wstring& library);

// In the process that tries: the hidden command probe, whose exit status probe_problem understands.
int probe(const std::wstring& library);
