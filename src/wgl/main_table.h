// The wgl handlers of an active process. The handler of an op whose row says `own` is name_op::handle, in this folder.
#pragma once

#include "ops/ops.h"

// Fills `__osw_wgl_table_main`. Process attach only.
void __osw_fill_wgl_table_main();
