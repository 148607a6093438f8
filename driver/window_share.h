// The share of the application's window that a part's drawable shows.
//
// Such a drawable is as large as the window and lies where the window lies; of it only the share is seen. So nothing
// that is given in window coordinates is changed on its way to the host, and what the host answers is the
// application's.
//
// All on the thread on which `c` is current on the host.
#pragma once

#include "context.h"

// What start_bindings is given (binding.h): the initial viewport and scissor box at the first time, and the scissor box
// that the drawable wants.
void settle_new_binding(context* c);

// The share's size, which the child window has, may be another than when it was told.
void look_at_share(context* c);
