// A thread of the driver's own that owns all windows of the driver. It does nothing but serve its message queue, so
// that nobody who moves, shows or destroys such a window waits for an application's thread, which may not look at its
// messages for long.
#pragma once

#include <windows.h>

// Runs `work` on the window thread and returns when it is done. Starts the thread at the first call and keeps the
// driver loaded from then on. False, with a report, when there is no such thread. Called by any thread that may start
// one, so not under the loader lock, and without a lock that `work` takes. Meanwhile the caller receives messages that
// other threads send to its windows.
bool on_window_thread(void (*work)(void* argument), void* argument);

// Registers a class for windows that are drawn to, each with a device context of its own. On the window thread. No
// failure: a class that exists already serves as well.
void register_window_class(const char* name, WNDPROC procedure);

// Lets the window thread share the input of the thread that `hwnd` belongs to. Without a window manager keys go to the
// window under the mouse: they are the application's to have. On the window thread.
void share_input(HWND hwnd);

// Lets the window thread call `work` every `milliseconds`, in place of what was set before; null ends it. On that
// thread.
void repeat_on_window_thread(void (*work)(), UINT milliseconds);
