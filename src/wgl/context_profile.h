// Which profile of OpenGL a context has.
#pragma once

#include "wgl/records/glrc.h"

// Asks the context once whether it is one of the core profile, where its record says that this is not known, and keeps
// the answer in the record. On the thread that has just made the context current; the system's entries are bound.
void note_profile(const __osw_thread_state* state, __osw_glrc* glrc);
