// Keeping the child windows in step with the application's window.
#pragma once

#include "dispatch/thread_state.h"

// Replaces the window procedure of the window and those of its ancestors, as far as they have not been replaced yet.
// Result: nonzero on success. On the thread that binds the window.
BOOL __osw_subclass_window(HWND hwnd);

// Lays out all parts of the window anew, moves its child windows, and tells the parts, if the calling thread has a
// context. On the thread that pumps the window. A window without a mapping is left alone.
void __osw_on_window_changed(HWND hwnd);

// The two passes around the command that makes the child contexts current: with the split method every child stands on
// its own monitor while a worker binds it. Without that option both do nothing.
void __osw_relayout_intersect(__osw_thread_state* state);
void __osw_relayout_split(__osw_thread_state* state);
