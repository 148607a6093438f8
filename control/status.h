// The command status.
#pragma once

// Prints the monitors, and the parts that a program would get that is started from here now. Gives the status that the
// program ends with.
int print_status();
