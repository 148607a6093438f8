// What a thread without a current context calls: stubs that do nothing.
#pragma once

#include "ops/types.h"

// Returns at once and sets no result. Also the six Glmf exports, and the driver's private ops where they have no
// handler.
void __osw_void_stub();

// Returns false, as a GLboolean.
GLboolean __osw_false_stub();

// Returns 0, good for any integer and for a null pointer.
u64 __osw_zero_stub();

// Fills `__osw_gl_table_nocontext`. Process attach only.
void __osw_fill_gl_table_nocontext();
