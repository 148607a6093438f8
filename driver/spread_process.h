// Whether the process is one that the library spreads over parts, or one whose calls the library only passes on.
//
// The library makes the contexts of the parts on hidden windows of a class that it names for others to know. It does so
// within the program's first creation of a context, on either path and before anything can be current, so that whoever
// asks for a version, a name or a function under a context hears the same from the first question on. A process that is
// not spread never has such a window. The private entries would come later, and not all of them on each path.
#pragma once

#include <windows.h>

// Looks at the window for which a context is about to be made. Any thread.
void note_creation(HDC hdc);

// Whether a part's context has ever been made in this process. Any thread.
bool is_spread_process();

// Whether the library spreads this process in its basic mode, in which it has functions up to OpenGL 3.1 and no child
// contexts with attributes, and withholds nothing itself. Any thread.
bool is_told_less();
