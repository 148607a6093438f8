// The GL handlers of a thread on the sequential path.
#pragma once

// Fills `__osw_gl_table_seq`. Process attach only.
void __osw_fill_gl_table_seq();
