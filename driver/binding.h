// Which context each thread's calls go to, and when the host is told.
//
// wglMakeCurrent and wglFastSwitchContextZ4 only note a binding. The host's wglMakeCurrent is made by the next call
// that needs it, so that a context which a thread merely owns can be drawn to by another, and a context that is
// switched to and away from without a call costs the host nothing.
//
// A binding that is refused then, when its application has long been told that it succeeded, stands for a time: the
// host, which has nothing current or another context, gets none of the calls that were meant for it.
#pragma once

#include <windows.h>

#include <intrin.h>

#include "context.h"

// Made at a thread's first call that needs it, freed when the thread ends.
struct thread_state {
  DWORD id;
  context* owned;    // by wglMakeCurrent
  context* current;  // what the thread's calls go to: `owned`, or what was switched to
  context* real;     // current on the host
  bool refused;      // `current` was deleted, or another thread used it: that is not looked at before the next binding
  int depth;         // of calls into the host that may come back through gdi32
};

// Deeper than any honest way through gdi32 and back.
constexpr int deepest_call = 16;

// TLS slot that holds the thread's state while its noted binding is real on the host, and null otherwise.
extern "C" DWORD driver_bound_slot;

// Process and thread life, called by DllMain with the loader lock held. `settle` is called from then on each time that
// the host was given drawables for a context, on the thread on which it is then current on the host. False when no slot
// is to be had.
bool start_bindings(void (*settle)(context* c));
void stop_bindings();
void end_thread_binding();

// The calling thread's state if its binding is real, else null; also null when the slot lies beyond the thread block's
// first 64, which bind_current settles. This is TlsGetValue written out: the call would cost every GL call a spill of
// its arguments.
inline thread_state* bound_thread() {
  const DWORD slot = driver_bound_slot;
  if (slot >= 64) [[unlikely]]
    return nullptr;
  return reinterpret_cast<thread_state*>(__readgsqword(0x1480 + slot * 8));
}

// Makes the calling thread's noted binding real. Returns the thread's state, or null when nothing is current or the
// binding is refused, which is reported once. A host that refuses a drawable which is still there is asked for a
// quarter of a second, and from then on when `retry_refused` says so. Loads the host. Not under the loader lock.
thread_state* bind_current();

// The same for a call that is to reach the host. False: it must not, because the binding is refused. Without a noted
// binding it may: the host knows what a call without a context is.
extern "C" bool driver_bind_for_call();

// The calling thread's context, if the host has refused it and is not asked now; else null.
context* refused_context();

// Lets the host be asked again, once, for the calling thread's context, if it refused it. When a frame is shown, by a
// swap, a glFlush or a glFinish: what was in the way for a moment, as a change of the display's mode, then costs frames
// and not the rest of the picture.
void retry_refused();

// The context that the calling thread's next call to the host will reach, or null.
inline context* calling_context() {
  thread_state* thread = bound_thread();
  if (!thread) thread = bind_current();
  return thread ? thread->current : nullptr;
}

// The calling thread's state, without any binding being made real. Null when there is no memory.
thread_state* this_thread();

// Notes `hglrc` on `draw` and `read` as the calling thread's binding, or none with a null `hglrc`. What the host has
// current is given up if it is another context. Returns as wglMakeCurrent and sets the last error.
BOOL note_binding(HDC draw, HDC read, HGLRC hglrc);

// Makes `c` the calling thread's context, on the drawables that it was last bound to, whoever owns it. False, with a
// report and no change, when it was never bound, is deleted, or is current on the host on another thread.
BOOL switch_to(context* c);

// Lets the calling thread have no context, on the host too, and frees `c` from what the thread notes of it.
void forget_context(context* c);

// Lets the host see that the window of `c`, which is current on it, was resized. A host that draws by software asks for
// the size once after each swap, and would draw all that comes before the next one at an old size; what the swap shows
// is the last frame. Does nothing without a stand-in, but for a context that is spared and counts samples.
void settle_size(context* c);

// Says that the calling thread's current context no longer has the drawables that the host has.
void unsettle_drawables(thread_state* thread);

// Lets the host have nothing current on the calling thread. What the thread noted stays, and becomes real at its next
// call.
void give_up_real();

// How many times the host's wglMakeCurrent was called for a binding or a switch in this process.
extern "C" unsigned long long driver_OswDriverSwitchCount();
