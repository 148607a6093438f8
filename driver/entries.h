// The driver's entries, exported or handed out by name.
#pragma once

#include "ops/ops.h"

// In op order.
extern const __osw_proc (&driver_gl_entries)[gl_op_count];
extern const __osw_proc (&driver_wgl_entries)[wgl_op_count];
