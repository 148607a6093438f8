// A small picture, and whether a library has drawn it.
#pragma once

#include <windows.h>

inline constexpr int trial_size = 64;  // pixels, the width and the height

enum class trial_outcome { right, wrong, no_functions };

// Draws into the back buffer of the context that is current on this thread, whose window has `trial_size`, by what
// `library` exports, and reads it back.
trial_outcome draw_trial_picture(HMODULE library);
