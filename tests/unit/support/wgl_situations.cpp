#include "support/wgl_situations.h"

#include <ostream>

#include "startup/config/monitors.h"

namespace situations {

void PrintTo(situation which, std::ostream* out) {
  switch (which) {
    case situation::threaded:
      *out << "threaded";
      return;
    case situation::sequential:
      *out << "sequential";
      return;
    case situation::released:
      *out << "released";
      return;
    case situation::no_queue:
      *out << "no_queue";
      return;
    case situation::bypassed:
      *out << "bypassed";
      return;
  }
}

stage enter(situation which) {
  const library::path way = which == situation::sequential ? library::path::sequential : library::path::threaded;
  library::start({.active = is_active(which), .way = way, .query_on_app_thread = false});
  stage entered;
  entered.which = which;
  entered.rendered = library::start_rendering();
  entered.current = entered.rendered.context;
  entered.thread_id = GetCurrentThreadId();
  if (which == situation::released || which == situation::no_queue) {
    EXPECT_TRUE(osw_wglMakeCurrent(nullptr, nullptr));
    entered.current = nullptr;
  }
  if (which == situation::no_queue) {
    entered.other = library::start_thread();
    entered.thread_id = entered.other->id;
  }
  act(entered, [&entered] {
    osw_wglGetCurrentContext();
    entered.state = scene::own_state();
  });
  EXPECT_EQ(entered.state->cmd_queue != nullptr, has_workers(which));
  forget(entered);
  return entered;
}

void act(const stage& stage, const std::function<void()>& work) {
  if (stage.other) {
    library::run(stage.other, work);
  } else {
    work();
  }
}

void forget(const stage& stage) {
  act(stage, [] { library::finish(); });
  driver::clear_calls();
  platform::clear_debug_output();
}

void expect_calls(const stage& stage, const std::vector<scene::step>& own,
                  const std::function<std::vector<scene::step>(int part)>& of_part) {
  act(stage, [] { library::finish(); });
  EXPECT_EQ(scene::steps_of(driver::calls_of_thread(stage.thread_id)), own);
  std::size_t count = own.size();
  if (has_workers(stage.which)) {
    for (int part = 0; part < __osw_part_count; ++part) {
      const std::vector<scene::step> expected = of_part(part);
      EXPECT_EQ(scene::steps_of(driver::calls_of_thread(stage.state->started.worker_thread_id[part])), expected)
          << "part " << part;
      count += expected.size();
    }
  }
  EXPECT_EQ(scene::steps_of(driver::calls()).size(), count) << "somebody else has called the driver";
}

void leave(const stage& stage) {
  if (stage.other) library::end_thread(stage.other);
}

}  // namespace situations
