// What the tests of contexts, windows and presentation look at, besides the notes of the driver and the desktop.
#pragma once

#include <array>
#include <iosfwd>
#include <string>
#include <vector>

#include "dispatch/thread_state.h"
#include "support/library.h"
#include "wgl/records/window_mapping.h"

namespace scene {

// A rectangle that can be compared and printed: left, top, right, bottom.
using edges = std::array<LONG, 4>;
edges edges_of(const RECT& rect);

// A call together with the context that was current at it.
struct step {
  HGLRC context = nullptr;
  driver::call call;
};
bool operator==(const step& first, const step& second);
std::ostream& operator<<(std::ostream& out, const step& shown);

template <class Op, class... Arguments>
step in(HGLRC context, Arguments... arguments) {
  return {context, driver::expect<Op>(arguments...)};
}

// The calls in order, less the questions for entry points.
std::vector<step> steps_of(const std::vector<driver::call>& calls);

// The state of the calling thread, or null.
__osw_thread_state* own_state();

// Of the calling thread, which has workers: what its worker of `part` has called.
std::vector<step> worker_steps(int part);

// What the application's own thread has called: the calling one.
std::vector<step> own_steps();

// Starts an active process over these monitors, one part each. `setup` says the rest.
void start_over(const std::vector<RECT>& monitors, library::process_setup setup = {});

struct box {
  HWND owner;
  std::string text;
  bool operator==(const box&) const = default;
};
std::ostream& operator<<(std::ostream& out, const box& shown);

// The message boxes so far, each checked for its caption and kind.
std::vector<box> boxes();

// The child windows of an application's window in part order.
std::vector<platform::window_facts> child_windows(HWND parent);

// The mapping of the window; fails the test when there is none.
const __osw_window_mapping& mapping_of(HWND hwnd);

// The driver context of a context.
HANDLE driver_context(HGLRC hglrc);

// Moves and sizes a window as the application would, in place and size alone.
void place(HWND hwnd, const RECT& rect);

}  // namespace scene
