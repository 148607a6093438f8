// The parts: one output of the wrapper each. Built once at process attach; afterwards all threads read without a lock.
#pragma once

#include "dispatch/thread_state.h"

struct __osw_monitor {
  u32 index;            // in the order of enumeration
  RECT rect;            // the part's area in virtual-screen coordinates
  MONITORINFOEXA info;  // as the system gave it
};

extern __osw_monitor __osw_monitor_table[max_parts];

// The number of entries in use: at most 16. A value below 1 means no parts.
extern i32 __osw_part_count;

// The union of all monitors.
extern RECT __osw_virtual_screen;

// Fills the three from the system's monitors and the options. Process attach only, after the options are read.
void __osw_enumerate_monitors();

// The second half of that: makes parts of the monitors in the table, as the options say.
void apply_monitor_options();

// Makes the first entry cover the virtual screen, and the only one.
void __osw_fake_one_monitor();

// One cell of a rectangle that is cut into `columns` by `rows`, at most two of each. The cells are numbered row by row
// from the upper left one, and the left and upper ones leave an odd pixel to the others.
RECT cell_of(const RECT& whole, i32 columns, i32 rows, i32 number);

// Cuts the one entry into as many parts as the option says: 2 or 4. Any other number becomes the part count and cuts
// nothing.
void __osw_split_one_monitor();
