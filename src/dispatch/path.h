// What the wgl functions do in another way on each path. A thread's state points to one of these tables, which is set
// together with its mode, so that no handler asks for the path.
#pragma once

#include "ops/types.h"

struct __osw_thread_state;

// The result of work that is in the list and whose results nobody waits for; changes nothing when it is ANDed.
constexpr BOOL answered_later = ~0;

// The size that the application's own context is told: nobody sees what it draws.
constexpr GLint unseen_size = -1;

// Everything runs on the thread that owns the state, which holds no lock. The results are those of the parts ANDed, or
// `answered_later`.
struct path_work {
  // Telling the parts about the bound window, and nothing when a pbuffer is bound: where the origin of its client area
  // lies in each part's drawable, the size of the client area, and the client area as the viewport.
  void (*send_viewport_offset)(__osw_thread_state* state);
  void (*send_drawable_size)(__osw_thread_state* state);
  void (*send_viewport)(__osw_thread_state* state);

  // Presents the bound window's children, or `hdc` itself when the picture is there; the second with the planes.
  BOOL (*swap)(__osw_thread_state* state, HDC hdc);
  BOOL (*swap_layer)(__osw_thread_state* state, HDC hdc, UINT planes);

  // The application's own context or pbuffer is not touched. A pbuffer without a record is reported.
  BOOL (*swap_interval)(__osw_thread_state* state, int interval);
  BOOL (*bind_tex_image)(__osw_thread_state* state, HPBUFFERARB hpbuffer, int buffer);
  BOOL (*release_tex_image)(__osw_thread_state* state, HPBUFFERARB hpbuffer, int buffer);
  BOOL (*set_pbuffer_attributes)(__osw_thread_state* state, HPBUFFERARB hpbuffer, const int* attributes);

  // Replays a wgl op with `count` arguments on one part after the other, each of which has the number of that part
  // behind the arguments. Nothing without a context.
  void (*replay_one_by_one)(__osw_thread_state* state, i32 op, const u64* slots, u32 count);
};

// A thread that draws on no path may have workers from an earlier binding, to which the last five then go in the list.
// Without workers a swap goes to the system, a texture binding fails, and the rest does nothing.
extern const path_work no_context_path;

// The same, but a swap always goes to the system: the picture is in the application's own window.
extern const path_work pass_path;

extern const path_work sequential_path;
extern const path_work threaded_path;

// Those of the extended mode: a swap hands its list over.
extern const path_work finishing_no_context_path;
extern const path_work finishing_threaded_path;
