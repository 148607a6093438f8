// Look-up of entry points by name.
#pragma once

#include "ops/tables.h"

// The wrapper's entry point of a wgl or a GL name, or null when the wrapper does not know the name. `name` is
// zero-terminated and its case counts. Any thread, no lock needed.
__osw_proc __osw_find_wgl_entry(const char* name);
__osw_proc __osw_find_gl_entry(const char* name);

// What wglGetProcAddress answers in an active process: the wrapper's own entry point for a name that the system knows
// under the current context, and null for any other, so that no call can reach a single part by accident. A name that
// begins with neither wgl nor gl is reported.
PROC __osw_get_proc_address(LPCSTR name);
