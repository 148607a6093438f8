// The record of one thread that has entered the library, and how the thread finds it.
#pragma once

#include "dispatch/system.h"
#include "ops/tables.h"

struct __osw_cmd_queue;
struct __osw_glrc;
struct __osw_pbuffer;
struct __osw_window_mapping;
struct path_work;
struct staged_block;

constexpr int max_parts = 16;
constexpr int max_thread_states = 64;

// The threads that serve one issuing thread. The second TLS slot holds a copy on the heap once all of them exist.
struct __osw_thread_ctrl {
  HANDLE app_thread;
  HANDLE worker_thread[max_parts];
  HANDLE swap_thread;
  DWORD worker_thread_id[max_parts];
  DWORD swap_thread_id;
  struct __osw_thread_state* state;
};

// Values of `mode`. It records the state and switches nothing: calls go through `gl_table` and `path`.
constexpr i32 mode_no_context = 0;
constexpr i32 mode_sequential = 1;
constexpr i32 mode_threaded = 2;
constexpr i32 mode_pass = 3;

// Every field but the ones marked (w) is touched by its own thread alone. The thread's workers load the marked ones
// while the thread may be storing them: both sides use relaxed accesses.
struct __osw_thread_state {
  i32 wgl_bound;                // 0 only during creation
  const __osw_proc* sys_wgl;    // (w)
  const __osw_proc* sys_gl;     // (w) null until the first make-current with a context
  const __osw_proc* wgl_table;  // fixed at creation
  const __osw_proc* gl_table;   // what every GL entry point jumps through
  i32 has_context;              // 1 while a context is current through the wrapper
  HDC current_hdc;              // of the last make-current, also a failed one
  HGLRC current_hglrc;          // the same
  u32 thread_id;
  i32 frame_count;                       // swaps since the last make-current
  __osw_thread_ctrl* thread_ctrl;        // the second TLS slot's value while a context is current
  __osw_window_mapping* window_mapping;  // (w) null for a pbuffer
  __osw_pbuffer* pbuffer;                // (w) null for a window
  __osw_glrc* glrc;                      // (w)
  __osw_cmd_queue* cmd_queue;            // from the first make-current with a context until the state's end
  i32 mode;
  i32 wrapper_bypassed;
  i32 seq_path;              // 1 exactly when `mode` is sequential
  __osw_proc seq_override;   // set for the length of an alias's call, else null
  __osw_proc pass_override;  // the same on the pass-through path
  u64 map_size;              // the buffer mapped on the sequential path
  void* map_staging;
  void* map_part_pointers[max_parts];
  staged_block* staged_blocks;    // that the application may still hold, the last one made first
  i32 unmapped_blocks;            // of these; which ones is not known
  __osw_thread_ctrl* ctrl_block;  // the second TLS slot's value, freed with the state
  __osw_thread_ctrl started;      // the threads made so far: a start that failed half-way is taken up by the next
  const path_work* path;          // what the wgl functions do in this mode; never null
};

// The two TLS slots: `__osw_thread_state`, and `__osw_thread_ctrl` of a thread that has workers. Made at process
// attach.
extern DWORD __osw_state_slot;
extern DWORD __osw_ctrl_slot;

// Guards the list of states. Made and deleted with the process.
extern CRITICAL_SECTION __osw_thread_state_lock;

// The states that process detach cleans up, in slots of which free ones are null; under `__osw_thread_state_lock`.
extern __osw_thread_state* __osw_thread_state_list[max_thread_states];

// Creates a state for the calling thread, binds the system's wgl entries, and lists the state. It neither reads nor
// sets the TLS slot. A 65th state is left out of the list and works all the same. Result: the state, or null when there
// is no memory.
__osw_thread_state* __osw_get_thread_state();

// The same for a thread that never called and ends now, with the loader lock held: it waits for no binding. Null
// without memory, and when no thread of the process has called yet, so that nothing is loaded.
__osw_thread_state* make_ending_thread_state();

// Takes a state out of the list; one that is not listed is passed over. Any thread.
void __osw_unlist_thread_state(const __osw_thread_state* state);

// Creates the calling thread's state and stores it in its TLS slot. Without memory the result is the state that such
// threads share, until a later call finds memory.
__osw_thread_state* __osw_store_new_thread_state();

// The state that threads without one of their own share: those that found no memory, and those that call once more
// after their end was told, as a program's destructors may. GL calls do nothing and wgl calls go to the system. Nobody
// writes to it.
__osw_thread_state* shared_thread_state();

// The calling thread's state, created and stored in its TLS slot when it has none. Never null.
inline __osw_thread_state* __osw_fetch_thread_state() {
  if (void* state = TlsGetValue(__osw_state_slot)) [[likely]]
    return static_cast<__osw_thread_state*>(state);
  return __osw_store_new_thread_state();
}

// The system's entry of an op, for the thread that owns the state.
template <class Op>
inline typename Op::type* sys_gl(const __osw_thread_state* state) {
  return entry_in<Op>(state->sys_gl);
}

// The same of a wgl op. Before the first context a slot may be empty because another thread's binding has just emptied
// the table; then that is waited for. Null when the system has no such entry.
template <class Op>
inline typename Op::type* sys_wgl(const __osw_thread_state* state) {
  if (auto* entry = entry_in<Op>(state->sys_wgl)) [[likely]]
    return entry;
  return reinterpret_cast<typename Op::type*>(await_wgl_entry(state->sys_wgl, Op::op));
}
