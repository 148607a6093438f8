// Threads of a scene, which wait for each other with their windows' messages taken.
#pragma once

#include <windows.h>

// A thread that cannot be started counts as a failed check.
HANDLE start_thread(DWORD (*body)(void*), void* argument);

// Takes messages until the thread has ended, and closes its handle. One that goes on for a minute counts as a failed
// check.
void join_thread(HANDLE thread);

// An event that lets one waiting thread through and is then as before.
HANDLE make_event();

// Takes messages until the event is set. One that is not set within a minute counts as a failed check.
void await_event(HANDLE event);
