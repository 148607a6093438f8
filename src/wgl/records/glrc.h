// The registry of application contexts: which child context stands behind each on each part.
#pragma once

#include "dispatch/thread_state.h"
#include "wgl/records/client_attribs.h"
#include "wgl/records/client_state.h"
#include "wgl/records/pixel_store.h"
#include "wgl/records/query_notes.h"

constexpr int max_glrcs = 64;

// A slot is free when its key is null. The handles are written once, in one copy under the lock, and zeroed under it;
// all that follows `child_hglrc` is written without a lock by the thread that has the context current.
struct __osw_glrc {
  HGLRC app_hglrc;        // the handle that the application holds; key of the slot
  HANDLE app_gl_context;  // driver contexts: sequential path only
  HGLRC child_hglrc[max_parts];
  HANDLE child_gl_context[max_parts];
  // Whose lists the children have still to share, because no thread had workers then, and when that was remembered,
  // counted up; both under `__osw_glrc_lock`.
  HGLRC share_with;
  u32 share_turn;
  u32 viewport_set;  // 1 once the context's first viewport has been issued
  // 1: it was made with attributes and has not been asked for its profile; its first binding does. And whether that is
  // the core profile.
  u32 profile_unknown;
  u32 is_core;
  // In the extended mode: the framebuffer objects that are bound, 0 for the window, and what is known of queries.
  u32 draw_framebuffer;
  u32 read_framebuffer;
  query_notes queries;
  __osw_client_state client_state;
  __osw_pixel_store pack_store;
  __osw_pixel_store unpack_store;
  pixel_store_stack unpack_stack;  // sequential path only
  // The extended mode's, on the threaded path: what is known beyond `client_state`, whose arrays are those of the first
  // object.
  array_objects arrays;
  client_attrib_stack client_attribs;
};

extern __osw_glrc __osw_glrc_registry[max_glrcs];

// Guards the scans, the fill and the zeroing of slots; no system call is made under it. Made and deleted with the
// process.
extern CRITICAL_SECTION __osw_glrc_lock;

// The record of a context, or null. `hglrc` is not null. The record is used after the lock is gone: it is static
// storage, and a caller that deletes the context meanwhile sees it zeroed. Any thread.
__osw_glrc* __osw_glrc_lookup(HGLRC hglrc);

// A record at the defaults of GL, without children. Any thread.
__osw_glrc new_glrc(HGLRC hglrc);

// Copies `record` into the first free slot. A full table takes no copy, and nothing is said: the context works without
// parts then. Any thread.
void __osw_glrc_enter(const __osw_glrc& record);

// Zeroes the record of a context that is current nowhere, and frees what it owns. Any thread.
void __osw_glrc_erase(HGLRC hglrc);

// Two contexts of which the second shares the first's lists.
struct shared_pair {
  HGLRC first;
  HGLRC second;
};

// Whether there is one record at the most. Any thread.
bool is_only_glrc();

// Remembers a share that the children have still to make. Nothing when the second context has no record. Any thread.
void __osw_glrc_remember_share(const shared_pair& pair);

// Takes the share that was remembered first: a context that shares already must not be the second of another pair.
// Result: whether there was one. Any thread.
bool __osw_glrc_take_share(shared_pair* pair);
