// Look-ups by name, against what the driver below answers.
#pragma once

// With a context current. `active` says which of the two kinds of processes this one has to be.
void check_look_ups(bool active);
