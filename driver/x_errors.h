// Errors of the X server's on the connection that Wine's drawing shares between all threads of a process.
//
// This Wine gives a child window's device context no drawable, and each time that one is taken or changed the X server
// refuses some requests. The refusal reaches whichever thread reads the connection next, and Xlib lets that thread
// report it only when nobody else has locked the display. Where another has locked it, as Wine does to read the screen,
// and waits for an answer behind that very thread, both wait for ever. So the thread that has provoked errors takes
// them in before it goes on: then it does not read the screen meanwhile, and the parts' threads find none.
#pragma once

#include <windows.h>

// Makes what await_errors needs, with a window's device context that has `pixel_format` on the host. Only the first
// call in the process does something; if it fails, it is reported, and nothing is ever awaited. On the window thread.
void prepare_to_await_errors(HDC hdc, int pixel_format);

// Returns when the X server has answered all that was asked of it on that connection, in one round trip. Any thread,
// without a lock of the driver's.
void await_errors();
