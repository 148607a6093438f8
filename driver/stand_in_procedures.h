// The window procedures of stand-ins, and of the children that have one.
#pragma once

#include "stand_in_record.h"

// That of a stand-in: what is drawn in it is the child's to say, and so is what the mouse does there.
LRESULT CALLBACK stand_in_procedure(HWND hwnd, UINT message, WPARAM first_word, LPARAM second_word);

// Puts a procedure before the child's own, by which its stand-in follows each change of its place and size before the
// child hears of it, and goes with it. On the window thread, under the lock, until which the child's messages wait.
void hook_child(stand_in* s);
