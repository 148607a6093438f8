// What a bypassed process calls: the system's entries, as if the library were not there.
#pragma once

// Fill the pass-through tables. Process attach only.
void __osw_fill_gl_table_pass();
void __osw_fill_wgl_table_pass();
