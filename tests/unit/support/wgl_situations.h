// The states in which a thread can call a wgl function, each with the system's entries bound and a context at hand.
#pragma once

#include "support/wgl_scene.h"

namespace situations {

enum class situation {
  threaded,    // a context is current, and has workers
  sequential,  // the same on the other path
  released,    // no context is current; the workers of the last one are still there
  no_queue,    // a thread that has never had a context, in a process where another one has
  bypassed     // a context is current in a bypassed process
};
void PrintTo(situation which, std::ostream* out);

inline const auto all = testing::Values(situation::threaded, situation::sequential, situation::released,
                                        situation::no_queue, situation::bypassed);

inline bool is_active(situation which) {
  return which != situation::bypassed;
}

// Whether the calling thread has workers.
inline bool has_workers(situation which) {
  return is_active(which) && which != situation::no_queue;
}

// A process in one of the states, and the thread that is in it.
struct stage {
  situation which = situation::threaded;
  library::rendering rendered;        // what was bound first
  HGLRC current = nullptr;            // on the thread
  library::app_thread_pointer other;  // the thread, where it is not the test's own
  DWORD thread_id = 0;
  __osw_thread_state* state = nullptr;  // of the thread
};

// Starts the process. Two parts.
stage enter(situation which);

// Runs `work` on the stage's thread.
void act(const stage& stage, const std::function<void()>& work);

// Waits until every part has replayed what the thread has issued, then forgets all calls and reports.
void forget(const stage& stage);

// Waits in the same way, then checks that since then the thread made the calls of `own`, that the worker of each part
// made those of `of_part`, and that nobody made any others.
void expect_calls(const stage& stage, const std::vector<scene::step>& own,
                  const std::function<std::vector<scene::step>(int part)>& of_part);

// Lets the stage's thread end, where it is not the test's own.
void leave(const stage& stage);

}  // namespace situations
