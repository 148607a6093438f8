#include "travelling.h"

#include "layout.h"
#include "painting.h"

void paint_frames(const gl_window& window, int count) {
  for (int i = 0; i < count; ++i) {
    paint(window.hwnd, 20 + i);
    CHECK(SwapBuffers(window.hdc));
  }
}

place on_the_way(const place& from, const place& to, int step, int steps) {
  const auto between = [=](int first, int last) { return first + (last - first) * step / steps; };
  return {between(from.left, to.left), between(from.top, to.top), between(from.width, to.width),
          between(from.height, to.height)};
}

void travel(const gl_window& window, const place& from, const place& to, int steps) {
  for (int i = 1; i <= steps; ++i) {
    move_window(window.hwnd, on_the_way(from, to, i, steps));
    paint_frames(window, 1);
    pump(0);
  }
}

void visit(const std::vector<stop>& stops, int steps) {
  const gl_window window = make_window(stops[0].at);
  for (size_t i = 0; i < stops.size(); ++i) {
    if (i > 0) travel(window, stops[i - 1].at, stops[i].at, steps);
    check_layout(window.hwnd);
    paint_and_show(window, static_cast<int>(i), stops[i].name.c_str());
  }
  destroy_window(window);
}
