// The driver's entries by name.
#pragma once

#include <windows.h>

// What the driver answers to wglGetProcAddress: its own entry for a function of the op lists that the host has under
// the calling thread's context, the driver's private entries in any case, of which wglFastSwitchContextZ4 only where it
// is one (fast_switch.h), null for what it does not offer to this process. A function that the lists lack gets an entry
// that knows no prototype. Makes the thread's binding real.
PROC find_entry(const char* name);
