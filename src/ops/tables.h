// The process-wide tables, one slot per op, of which the basic mode leaves those beyond gl_op_count empty. All are zero
// at load. The dispatch tables, the flags and the names are written once, at process attach, and only read afterwards,
// without a lock; the two system tables are written by the binding under its locks (dispatch/system.h).
#pragma once

#include "ops/names.h"

// The ops in use are those below it: gl_op_count, or gl_all_count in the extended mode. Set at process attach, before
// anything is filled, and constant afterwards.
extern int gl_ops_in_use;

extern __osw_proc __osw_sys_wgl[wgl_op_count];
extern __osw_proc __osw_sys_gl[gl_all_count];

extern __osw_proc __osw_wgl_table_main[wgl_op_count];
extern __osw_proc __osw_wgl_table_pass[wgl_op_count];
extern __osw_proc __osw_gl_table_nocontext[gl_all_count];
extern __osw_proc __osw_gl_table_seq[gl_all_count];
extern __osw_proc __osw_gl_table_mt[gl_all_count];
extern __osw_proc __osw_gl_table_pass[gl_all_count];

// The entry points that applications call, exported or handed out by name, in op order.
extern const __osw_proc (&__osw_wgl_entries)[wgl_op_count];
extern const __osw_proc (&__osw_gl_entries)[gl_all_count];

// Per op: 1 when the issuing thread waits for the replay of a command of this op, else 0.
extern u32 __osw_wgl_sync_flags[wgl_op_count];
extern u32 __osw_gl_sync_flags[gl_all_count];

// Per op: the label of its count in the statistics; null exactly where the sync flag is 0.
extern const char* __osw_wgl_op_names[wgl_op_count];
extern const char* __osw_gl_op_names[gl_all_count];

// Set at the end of the two fills below.
extern u32 __osw_wgl_sync_filled;
extern u32 __osw_gl_sync_filled;

// Calls `work.operator()<Op>()` for each op in use, in op order.
template <class Work>
inline void for_each_gl_op_in_use(Work work) {
  for_each_gl_op(work);
  if (gl_ops_in_use > gl_op_count) for_each_wide_op(work);
}

// The same for each op in the form that it has in this mode.
template <class Work>
inline void for_each_gl_form_in_use(Work work) {
  for_each_gl_op_in_use(work);
  if (gl_ops_in_use > gl_op_count) for_each_changed_op(work);
}

// The same for wgl, whose ops are all in use in either mode.
template <class Work>
inline void for_each_wgl_form_in_use(Work work) {
  for_each_wgl_op(work);
  if (gl_ops_in_use > gl_op_count) for_each_changed_wgl_op(work);
}

// Fill the sync flags and the statistics names of one op space. No failure. Called at process attach, and by the
// creation of a queue when the flag above is still clear.
void __osw_fill_wgl_sync();
void __osw_fill_gl_sync();
