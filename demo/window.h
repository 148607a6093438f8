// The viewer's window: it shows the scene and follows the mouse.
#pragma once

#include "model.h"
#include "options.h"

// Opens the window, draws the benchmark's pictures if there are any, and shows the model until the window is closed or,
// as the options say, the picture has been seen. The result is the program's exit status; a failure has been told in
// one line on standard error.
int show_model(const options& chosen, const model& shown);
