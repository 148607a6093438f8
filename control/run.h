// The command run.
#pragma once

#include "command_line.h"

// Starts the program with the feature on, waits for its end and puts everything back. Where its folder has no
// libraries, they are there meanwhile. Gives the program's exit status, or one of ours when it could not be started.
int run(const run_request& request);

// The same where the libraries are in their place.
int start_in_place(const run_request& request);
