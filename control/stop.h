// What the user or Windows does to end us while a program runs.
#pragma once

#include <windows.h>

struct stop_events {
  HANDLE interrupted;  // Ctrl-C or Ctrl-Break in our console
  HANDLE closing;      // the console's window was closed, or the user logs off or shuts down
};

// From now on none of that ends this process by itself: the events are set in place of it. After `closing`, Windows
// ends the process some seconds later.
stop_events watch_for_stop();
