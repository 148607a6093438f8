// Bringing stand-ins to the front with the windows that own them.
//
// It goes in two steps over each owner: first the stand-ins, then the application's own windows. Before the second Wine
// has to have heard of the first from the X server. Otherwise it takes the windows to lie in the other order.
#pragma once

#include "stand_in_record.h"

// From now on notes when the owner, or another window of its thread that owns stand-ins, is shown or gets the focus. A
// failure is reported. Any thread.
void watch_owner(HWND owner);

// Whether another window is in the foreground than at the last look. Any thread.
bool has_new_foreground();

// Looks which owners have come to the front and have left their stand-ins behind, and does one step for one owner, if
// there is any to do now. On the window thread.
void look_at_order();

// Looks which owners' windows lie in another order than theirs, and has look_at_order raise them again when they have
// for five looks. At each look of the window thread.
void look_for_disorder();

// Raises the stand-ins of the owner of `s` if that is to be done now: not before the owner itself is in front. On the
// window thread.
void raise_with(const stand_in* s);
