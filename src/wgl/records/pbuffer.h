// The registry of application pbuffers: which child pbuffer stands behind each on each part.
#pragma once

#include "dispatch/thread_state.h"

constexpr int max_pbuffers = 64;

struct __osw_pbuffer_part {
  HPBUFFERARB child_hpbuffer;
  HDC hidden_hdc;  // of the hidden window on which the child was made; lives as long as the child
  HDC child_hdc;   // of the child, once the application has asked for its own; workers load it, relaxed
};

// A slot is free when its key is null.
struct __osw_pbuffer {
  HPBUFFERARB app_hpbuffer;  // the handle that the application holds; key of the slot
  HDC app_hdc;               // as given at creation, like the three that follow
  i32 pixel_format;
  i32 width;
  i32 height;
  HDC pbuffer_hdc;  // of the application's pbuffer, null until it is asked for; how make-current finds the record
  __osw_pbuffer_part parts[max_parts];
};

extern __osw_pbuffer __osw_pbuffer_registry[max_pbuffers];

// As `__osw_glrc_lock`. The two are never held together.
extern CRITICAL_SECTION __osw_pbuffer_lock;

// The record of a pbuffer, or null. `hpbuffer` is not null. Any thread.
__osw_pbuffer* __osw_pbuffer_lookup(HPBUFFERARB hpbuffer);

// The same after a report when there is none, which says that `function` reaches no part. `hpbuffer` may be null.
__osw_pbuffer* find_pbuffer_or_warn(HPBUFFERARB hpbuffer, const char* function);

// The record whose pbuffer's device context is `hdc`, or null. `hdc` is not null. Any thread.
__osw_pbuffer* __osw_pbuffer_of_hdc(HDC hdc);

// Whether a device context is that of a window or of a pbuffer with a record. Any thread.
bool is_drawable(HDC hdc);

// As `__osw_glrc_enter` and `__osw_glrc_erase`.
void __osw_pbuffer_enter(const __osw_pbuffer& record);
void __osw_pbuffer_erase(HPBUFFERARB hpbuffer);
