// Windows that stand in for child windows.
//
// A child that shows a share of the application's window is drawn to in a window of ours that is as large as that one
// and lies inside the child, which clips it.
//
// Wine draws OpenGL into a child window correctly and never shows it. There, each child window with a pixel format gets
// a popup window at its place on the screen, owned by its top window; the host draws and swaps in that. It follows the
// child's place, size and visibility, is clipped as the child is, and goes with it. For a share it is as large as the
// application's window, and clipped to what the child shows.
#pragma once

#include <windows.h>

#include "window_place.h"

// Under Wine makes the stand-in of a child window, if there is none yet, and gives it a pixel format; the child
// itself gets none from the host, which would only make a drawable that nobody sees. The child may have no size: its
// stand-in is then hidden. On a failure, which is reported, there is none, and the child is drawn to itself. Any thread
// that may send messages.
void make_stand_in(HWND child, int pixel_format, const PIXELFORMATDESCRIPTOR* descriptor);

// The device context of a window's stand-in, or null. Any thread; it is usable by any thread.
HDC stand_in_hdc(HWND child);

// Lets a child be drawn to in a drawable as large as the application's window and at its place, of which what lies in
// the child is seen; null: as large as the child. Returns whether it is so; a top window is always as
// large as itself. A stand-in that is made now, outside of Wine, gets the pixel format. Any thread that may send
// messages.
bool place_window(HWND child, int pixel_format, const window_place* window);

// Whether the window's stand-in, which has been asked about before, has another size since. Any thread.
bool take_resized(HWND child);

// Before something is shown: puts the window's stand-in where the window has gone with an ancestor. What is drawn where
// nothing of it is seen yet would be lost. Any thread that may send messages.
void catch_up(HWND child);

// The host's device context for one that an application gave: its window's stand-in's, or itself.
HDC host_hdc(HDC hdc);
