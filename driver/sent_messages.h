// The messages that are sent to a thread's windows.
#pragma once

#include <windows.h>

// From now on has `told` called on the thread `thread` of this process for each message that is sent to one of its
// windows, before the window has it, and with no lock of the driver held; in place of what was set for the thread
// before. False when the system refuses. Any thread. Wine tells the messages from now on if the calling thread is
// `thread`, and otherwise those after it has looked for messages the next time.
bool watch_sent_messages(DWORD thread, void (*told)(const CWPSTRUCT& sent));
