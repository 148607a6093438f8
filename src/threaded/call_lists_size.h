// The size of the array that glCallLists takes.
#pragma once

#include "ops/types.h"

// Bytes of `count` list names of `type`; 0 for a count below 1 and for a type that is none.
u32 __osw_call_lists_size(GLsizei count, GLenum type);
