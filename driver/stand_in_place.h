// Where stand-ins belong, and that they go there.
#pragma once

#include "stand_in_record.h"

// Where a child's stand-in belongs now. `owner` is its top window, `window` that of which it shows a share, or null.
// Any thread that may send messages.
placement find_placement(HWND child, HWND owner, const window_place* window);

bool is_same_placement(const placement& a, const placement& b);

// Brings a stand-in to where its child is, under its child's top window as owner, or destroys it if the child is gone.
// `s` may be gone on return. On the window thread, as the next two.
void follow_child(stand_in* s);

// The same for all, and for what is left behind by its owner a step to the front.
void follow_all();

// How many rounds of follow_all have begun, and whether one has come to its end that began after so many had. Any
// thread.
unsigned rounds_begun();
bool is_followed_since(unsigned rounds);

// Takes a stand-in off the list, destroys its window and frees it. With the last, the looks at all of them end.
void destroy_stand_in(stand_in* s);
