// Telling the parts where the window stands in their drawables, and how large it is. On the thread that renders; each
// does nothing on a thread without a context.
#pragma once

#include "dispatch/thread_state.h"

struct __osw_glrc;

// The origin of the application's client area in each part's drawable.
void __osw_send_viewport_offset(__osw_thread_state* state);
void __osw_seq_send_viewport_offset(__osw_thread_state* state);

// The size of the application's client area, to every part; the application's own context is told that nobody sees it.
void __osw_send_drawable_size(__osw_thread_state* state);
void __osw_seq_send_drawable_size(__osw_thread_state* state);

// A context's first viewport, the whole client area: once in its life, where the child window's size would stand
// otherwise.
void __osw_send_initial_viewport(__osw_thread_state* state, __osw_glrc* glrc);
void __osw_seq_send_viewport(__osw_thread_state* state);
