// The host library: the WGL library that the driver stands on, and the table of its entries.
#pragma once

#include "ops/ops.h"

// What the driver calls for each op, in op order: the host's entry, or what stands before it. A slot without one holds
// a function that returns 0: the host was not found, lacks the function, or was not asked yet for it, as it is for an
// extension until an application asks the driver. Slots are filled without a lock, always with the same value, and
// never emptied.
extern __osw_proc host_gl[gl_op_count];
extern __osw_proc host_wgl[wgl_op_count];

// The host's entries themselves, with the same slots.
extern __osw_proc found_gl[gl_op_count];
extern __osw_proc found_wgl[wgl_op_count];

// Lets `before` be called in the place of the host's entry of an op, if the host has it or once it is found. One thread
// at a time, and not while another finds an op.
void stand_before_gl(int op, __osw_proc before);
void stand_before_wgl(int op, __osw_proc before);

// Loads the host library once in the process: the one that OSW_DRIVER_HOST names, by a full path or as a file of the
// system's folder, else that folder's opengl32host.dll or opengl32.dll. Returns whether there is one; without one the
// reason is reported and every entry returns 0. Any thread, outside DllMain.
bool load_host();

// The host's answer to a function's name, or null; the small numbers that some libraries answer instead of null count
// as null. An extension has an answer only while a context is current on the calling thread.
__osw_proc ask_host(const char* name);

// Fills the slot of an op that the host does not export, under a current context. Returns whether the host has it.
bool find_host_gl(int op, const char* name);
bool find_host_wgl(int op, const char* name);

template <class Op>
inline typename Op::type* host_gl_entry() {
  return reinterpret_cast<typename Op::type*>(host_gl[Op::op]);
}

template <class Op>
inline typename Op::type* host_wgl_entry() {
  return reinterpret_cast<typename Op::type*>(host_wgl[Op::op]);
}

// Whether the host has a GL op at all. The calling thread's context must be real on the host.
template <class Op>
inline bool host_has() {
  return find_host_gl(Op::op, Op::name);
}
