// The geometry in buffer objects, for the renderers that draw from them.
#pragma once

#include "renderer.h"

// Finds the functions and fills self's buffers. False, with a line in `*why`, if GL has no buffer objects.
bool make_buffers(drawing* self, std::string* why);
