// Folders with copies of the libraries, and the applications that load these: copies of this program in a role of
// roles.h. A folder's library has a shared section of its own.
#pragma once

#include <string>

#include "processes.h"

constexpr const char* application = "app.exe";

// An empty folder beside this program but for the libraries and the application, and its path, which ends with a
// backslash. Nothing in it is loaded by this program itself.
std::string make_folder(const char* name);

// Runs the folder's application to its end. Counts as a failed check if it does not end well.
void play(const std::string& folder, const std::string& role);

// An application that waits.
struct waiting {
  running_program program;
  HANDLE go;
};

// Starts the application in a role that ends with READY and GO, and waits until it is ready.
waiting start_waiting(const std::string& folder, const std::string& role);

// Lets it go on, and waits for its end as `play` does.
void finish(const waiting& held);
