// The child windows brought to where the layout has them. A child belongs to the thread that made it, often one that
// only draws: the system lets nobody else move it but by a message to that thread, which may never look for one, or
// wait for this one.
#pragma once

#include "wgl/records/window_mapping.h"

struct __osw_thread_state;

// Moves the child window to its `part_rect` and refreshes `screen_rect`. A child of another thread is told to move, and
// may not have done so yet. Any thread, with a use of the mapping held.
void __osw_apply_child_rect(__osw_child_part* child);

// Waits until the children of other threads have moved, at most two tenths of a second for each of those threads, and
// not at all for one that has once not answered. What was not done by then is done by take_missed_moves. The calling
// thread meanwhile takes what other threads send to its windows. Any thread, with a use of the mapping held and no
// lock.
void await_moves(__osw_window_mapping* mapping);

// Moves those of the calling thread's own children that have not followed the bound window. On the thread of the
// binding, at each binding and swap.
void take_missed_moves(const __osw_thread_state* state);

// Shows or hides all child windows of a mapping, those of other threads when they next take messages.
void __osw_show_children(__osw_window_mapping* mapping, bool show);
