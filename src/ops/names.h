// The functions' names, and what a look-up by name comes to. The library and its driver share it.
#pragma once

#include "ops/ops.h"

// The functions' own names, in op order.
extern const char* const (&__osw_wgl_names)[wgl_op_count];
extern const char* const (&__osw_gl_names)[gl_all_count];

// The op of a wgl or a GL name, or -1 for a name that the op list lacks; of GL, among the first `count` ops. `name` is
// zero-terminated and its case counts. Any thread, no lock needed. Look-ups are few and made while a program starts, so
// it is a scan.
int find_wgl_op(const char* name);
int find_gl_op(const char* name, int count = gl_op_count);

// What a library's wglGetProcAddress answered, with null for every way of saying that a name is unknown: some answer
// null, and some 1, 2, 3 or -1.
__osw_proc known_entry(PROC answer);
