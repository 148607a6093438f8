// What tools outside of the process may know of it: how its parts are drawn. Each way is a named event of the process,
// which is there or not, so that nobody has to be asked and nothing of it outlives the process.
#pragma once

#include <windows.h>

#include <cstdio>

// The names of the events, with the number of the process in place of %lu. A process that has both has begun to switch
// after threads of its own had begun to draw: it switches.
constexpr char switching_sign[] = "osw-%lu-switches-between-parts";
constexpr char threads_sign[] = "osw-%lu-has-a-thread-for-each-part";

// A sign's name for one process.
struct sign_name {
  char text[64];
  sign_name(const char* sign, DWORD process) { snprintf(text, sizeof text, sign, process); }
};

// The driver switches from the context of one part to that of the next for the calling thread. Any thread.
void note_switching();

// A context is made current for a drawable. Any thread.
void note_drawing_thread(HDC hdc);
