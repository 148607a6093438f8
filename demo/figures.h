// What pictures cost, as a benchmark prints it.
#pragma once

// How often the driver has changed the context of a thread in this process, or -1 where the driver does not count.
double count_switches();

// Seconds for which the processors were busy with this process, on all of its threads.
double busy_seconds();

// Reads the picture of `width` by `height` pixels back, which cannot end before all of it is there. Needs a current
// context.
void wait_for_picture(int width, int height);
