// The command list.
#pragma once

// Prints the running programs that are spread, with their windows and the parts of each. Gives the status that the
// program ends with.
int print_spread_programs();
