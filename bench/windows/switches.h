// What a fast switch of contexts costs, in the driver.
#pragma once

#include "batches.h"
#include "route.h"

struct switch_figures {
  figures noted;   // a switch behind which nothing is called
  figures called;  // a switch and one glEnable, for which the driver has to switch really
};

// Switches between `first`, which is current on `dc`, and a context of a window of its own, and leaves `first` current.
// False if that window or context cannot be had, or if the driver does not count one real switch for each call.
bool measure_switches(const route& through, HDC dc, HGLRC first, switch_figures* result);
