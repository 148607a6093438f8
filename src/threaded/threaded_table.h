// The GL handlers of a thread on the threaded path.
#pragma once

// Fills `__osw_gl_table_mt`. Process attach only.
void __osw_fill_gl_table_mt();
