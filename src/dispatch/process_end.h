// The end of the process. The system stops all other threads first, wherever they are, and then tells the libraries.
#pragma once

#include <windows.h>

// Whether that has happened. Set at process detach, with nobody else left to see it.
extern bool process_ends;

// As EnterCriticalSection and LeaveCriticalSection, for locks that the clean-up passes. A thread that was stopped
// within a lock never leaves it, and who enters such a lock then is ended too, before other libraries have heard of the
// end. With no other thread left there is nobody to keep out.
void enter_unless_process_ends(CRITICAL_SECTION* lock);
void leave_unless_process_ends(CRITICAL_SECTION* lock);
