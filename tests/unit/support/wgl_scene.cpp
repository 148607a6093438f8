#include "support/wgl_scene.h"

#include <algorithm>
#include <ostream>

#include "startup/config/monitors.h"

namespace scene {

edges edges_of(const RECT& rect) {
  return {rect.left, rect.top, rect.right, rect.bottom};
}

bool operator==(const step& first, const step& second) {
  return first.context == second.context && first.call == second.call;
}

std::ostream& operator<<(std::ostream& out, const step& shown) {
  return out << shown.context << ": " << shown.call;
}

std::vector<step> steps_of(const std::vector<driver::call>& calls) {
  std::vector<step> steps;
  for (const driver::call& call : calls) {
    const bool question = call.space == driver::op_space::wgl && call.op == wglGetProcAddress_op::op;
    if (!question) steps.push_back({call.context, call});
  }
  return steps;
}

__osw_thread_state* own_state() {
  return static_cast<__osw_thread_state*>(TlsGetValue(__osw_state_slot));
}

std::vector<step> worker_steps(int part) {
  return steps_of(driver::calls_of_thread(own_state()->started.worker_thread_id[part]));
}

std::vector<step> own_steps() {
  return steps_of(driver::calls_of_thread(GetCurrentThreadId()));
}

void start_over(const std::vector<RECT>& monitors, library::process_setup setup) {
  setup.parts = static_cast<int>(monitors.size());
  setup.parts_are_monitors = true;
  library::prepare(setup);
  std::vector<platform::monitor> all;
  for (const RECT& monitor : monitors) all.push_back({monitor, all.empty()});
  platform::set_monitors(all);
  ASSERT_EQ(platform::attach_process(), TRUE);
  ASSERT_EQ(__osw_part_count, setup.parts);
}

std::ostream& operator<<(std::ostream& out, const box& shown) {
  return out << shown.owner << ": " << shown.text;
}

std::vector<box> boxes() {
  std::vector<box> found;
  for (const platform::message_box& one : platform::message_boxes()) {
    EXPECT_EQ(one.caption, "OSW Error");
    EXPECT_EQ(one.type, 0u);
    found.push_back({one.owner, one.text});
  }
  return found;
}

std::vector<platform::window_facts> child_windows(HWND parent) {
  std::vector<platform::window_facts> children = platform::children_of(parent);
  std::erase_if(children, [](const auto& window) { return window.class_name != "__osw_child_window"; });
  std::ranges::sort(children, {}, &platform::window_facts::id);
  return children;
}

const __osw_window_mapping& mapping_of(HWND hwnd) {
  static const __osw_window_mapping none{};
  const __osw_window_mapping* mapping = __osw_window_mapping_of(hwnd);
  EXPECT_NE(mapping, nullptr);
  return mapping ? *mapping : none;
}

HANDLE driver_context(HGLRC hglrc) {
  return driver::context(hglrc).driver_context;
}

void place(HWND hwnd, const RECT& rect) {
  SetWindowPos(hwnd, nullptr, rect.left, rect.top, rect.right - rect.left, rect.bottom - rect.top,
               SWP_NOZORDER | SWP_NOACTIVATE);
}

}  // namespace scene
