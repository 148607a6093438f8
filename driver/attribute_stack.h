// The offsets that the levels of the attribute stack contain.
#pragma once

#include "context.h"

// After wglCopyContext: what the host copied contains the source's offsets.
void copy_offsets(context* destination, const context* source, GLbitfield mask);
