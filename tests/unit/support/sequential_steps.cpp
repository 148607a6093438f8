#include "support/sequential_steps.h"

#include <algorithm>
#include <ostream>

#include "dispatch/thread_state.h"

namespace sequential {

library::rendering start(library::process_setup setup) {
  setup.way = library::path::sequential;
  library::start(setup);
  const library::rendering rendered = library::start_rendering();
  EXPECT_EQ(__osw_fetch_thread_state()->mode, mode_sequential);
  driver::clear_calls();
  return rendered;
}

bool operator==(const step& first, const step& second) {
  return first.context == second.context && first.what == second.what;
}

std::ostream& operator<<(std::ostream& out, const step& shown) {
  return out << "in " << shown.context << ": " << shown.what;
}

step switch_to(HGLRC context) {
  return {nullptr, driver::expect<wglFastSwitchContextZ4_op>(driver::context(context).driver_context, 0)};
}

std::vector<step> steps() {
  std::vector<step> all;
  for (const driver::call& call : driver::calls()) {
    EXPECT_EQ(call.thread_id, GetCurrentThreadId());
    all.push_back({call.space == driver::op_space::gl ? call.context : nullptr, call});
  }
  return all;
}

std::vector<step> steps_without_addresses(std::initializer_list<int> ops) {
  std::vector<step> all = steps();
  for (step& one : all) {
    const bool is_named = one.what.space == driver::op_space::gl && std::ranges::find(ops, one.what.op) != ops.end();
    if (is_named) one.what.arguments[one.what.argument_count - 1] = 0;
  }
  return all;
}

std::vector<driver::call> calls_in(HGLRC context) {
  return driver::gl_calls_in(context);
}

std::vector<step> on_each_part(const library::rendering& rendered, const std::vector<driver::call>& calls) {
  std::vector<step> all;
  for (HGLRC child : rendered.children) {
    all.push_back(switch_to(child));
    for (const driver::call& call : calls) all.push_back({child, call});
  }
  all.push_back(switch_to(rendered.context));
  return all;
}

std::vector<step> on_first_part(const library::rendering& rendered, const std::vector<driver::call>& calls) {
  library::rendering first = rendered;
  first.children.resize(1);
  return on_each_part(first, calls);
}

void append(std::vector<step>* steps, const std::vector<step>& more) {
  steps->insert(steps->end(), more.begin(), more.end());
}

}  // namespace sequential
