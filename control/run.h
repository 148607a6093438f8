// The command run.
#pragma once

#include "command_line.h"

// Starts the program with the feature on, waits for its end and puts everything back. Gives the program's exit status,
// or one of ours when it could not be started.
int run(const run_request& request);
