// The functions of OpenGL 4.1 that set the scissor box of one viewport among several. The cut to a share has one box
// for all of them, so that a context which uses these is not cut from then on: it is drawn whole, which is merely
// slower.
#pragma once

#include "ops/ops.h"

// The driver's entry in the place of `hosts`, the host's for `name`; null for any other name. Any thread.
__osw_proc indexed_scissor_entry(const char* name, __osw_proc hosts);
