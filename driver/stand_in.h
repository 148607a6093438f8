// Windows that stand in for child windows.
//
// Wine draws OpenGL into a child window correctly and never shows it. There, each child window with a pixel format gets
// a popup window at its place on the screen, owned by its top window; the host draws and swaps in that. It follows the
// child's place, size and visibility, is clipped as the child is, and goes with it. Elsewhere none is ever made.
#pragma once

#include <windows.h>

// Makes the stand-in of a child window whose pixel format was just set, if one is needed and there is none yet. The
// child may have no size: its stand-in is then hidden. A failure is reported, and the child is drawn to itself. On any
// thread that may send messages.
void make_stand_in(HWND child, int pixel_format, const PIXELFORMATDESCRIPTOR* descriptor);

// The device context of a window's stand-in, or null. Any thread; it is usable by any thread.
HDC stand_in_hdc(HWND child);
