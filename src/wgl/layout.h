// Where each part's child window stands over the application's window. On the thread that pumps the window, or on the
// one that binds it.
#pragma once

#include "wgl/records/window_mapping.h"

// A rectangle of the screen in the client coordinates of a window.
RECT screen_to_client(HWND hwnd, const RECT& rect);

// Each computes `part_rect`, `visible` and the two offsets of part `part` from the mapping's `client_rect`.

// The part takes what its monitor shows of the window; a part at the edge of the desktop also what hangs over that
// edge.
void __osw_layout_intersect(__osw_window_mapping* mapping, i32 part);

// The parts divide the window among themselves, wherever it stands. Also refreshes `screen_rect`.
void __osw_layout_split_parent(__osw_window_mapping* mapping, i32 part);

// A part that shows nothing of the window: an empty rectangle, or one pixel by option, at its monitor's corner.
void __osw_layout_unused_part(__osw_window_mapping* mapping, i32 part);

// Lays the part out by the method that the options put in force.
void __osw_layout_part(__osw_window_mapping* mapping, i32 part);
