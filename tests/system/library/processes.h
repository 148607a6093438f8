// Programs that a test starts, and the registry that they read.
#pragma once

#include <windows.h>

#include <string>

std::string program_folder();  // ends with a backslash
std::string program_name();
std::string read_file(const std::string& name);
void write_file(const std::string& name, const std::string& text);

// A copy of the running program in its own folder, or in `folder`, which must end with a backslash. Gives its path.
std::string copy_of_this_program(const std::string& name, const std::string& folder = program_folder());

struct running_program {
  HANDLE process;
};

// Starts a program in the current folder, with its output where ours goes. A program that cannot be started counts as a
// failed check.
running_program start_program(const std::string& path, const std::string& arguments);

// What a program of ours ends with whose checks were all good. One that Xlib ends has 0, as many a good one.
constexpr DWORD good_status = 60;

// Waits for the end, for at most so many milliseconds, and gives the status; a program that takes longer is ended, and
// `ran_too_long` the result.
constexpr DWORD ran_too_long = 0xfffffffe;
DWORD finish_program(running_program program, DWORD limit);
DWORD run_program(const std::string& path, const std::string& arguments, DWORD limit);

// The library's options in the registry, which a program reads when it starts. One that is reset has its default.
void set_option(const char* name, DWORD value);
void reset_option(const char* name);

// What the environment or else the registry has for an option, or `otherwise`.
DWORD option_in_force(const char* name, DWORD otherwise);
