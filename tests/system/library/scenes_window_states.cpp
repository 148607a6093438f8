// Windows that are nowhere for a while, or somebody else's, and come back.
#include "layout.h"
#include "painting.h"
#include "picture.h"
#include "travelling.h"

namespace {

constexpr place over_all = {560, 270, 501, 377};  // over 800,450

void look(const gl_window& window, int number, const char* step) {
  check_layout(window.hwnd);
  paint_and_show(window, number, step);
}

// Frames of a window in which nothing can be painted.
void swap_frames(const gl_window& window, int count) {
  for (int i = 0; i < count; ++i) {
    glClear(GL_COLOR_BUFFER_BIT);
    CHECK(SwapBuffers(window.hdc));
  }
  pump(0);
}

// Wine alone draws the first frame after a resize in the old size if the X server has not yet heard of it. Over parts
// it has to be right.
void let_wine_resize(const gl_window& window) {
  if (expected_parts() == 0) swap_frames(window, 2);
}

void emptied_window() {
  begin_scene(__func__);
  const gl_window window = make_window(over_all);
  look(window, 1, "made");
  move_window(window.hwnd, {over_all.left, over_all.top, 0, 0});
  swap_frames(window, 3);
  move_window(window.hwnd, over_all);
  let_wine_resize(window);
  look(window, 2, "back");
  move_window(window.hwnd, {620, 300, 0, 290});
  swap_frames(window, 1);
  move_window(window.hwnd, {620, 300, 390, 0});
  swap_frames(window, 1);
  move_window(window.hwnd, {620, 300, 390, 290});
  let_wine_resize(window);
  look(window, 3, "of another size");
  destroy_window(window);
}

// The first binding finds no pixel at all.
void window_made_empty() {
  begin_scene(__func__);
  const gl_window window = make_window({700, 400, 0, 0});
  swap_frames(window, 2);
  travel(window, {700, 400, 20, 20}, over_all, 4);
  look(window, 1, "grown");
  destroy_window(window);
}

void show_as(HWND hwnd, int command) {
  ShowWindow(hwnd, command);
  pump(0);
}

void show_resized_as(const gl_window& window, int command) {
  show_as(window.hwnd, command);
  let_wine_resize(window);
}

void minimised_window() {
  begin_scene(__func__);
  const gl_window window = make_window(over_all);
  look(window, 1, "made");
  show_as(window.hwnd, SW_MINIMIZE);
  CHECK(IsIconic(window.hwnd));
  swap_frames(window, 3);
  show_resized_as(window, SW_RESTORE);
  look(window, 2, "restored");
  show_resized_as(window, SW_MAXIMIZE);
  CHECK(IsZoomed(window.hwnd));
  const place largest = client_place(window.hwnd);
  note("maximised: %d,%d %dx%d", largest.left, largest.top, largest.width, largest.height);
  look(window, 3, "maximised");
  show_as(window.hwnd, SW_MINIMIZE);
  swap_frames(window, 3);
  show_resized_as(window, SW_RESTORE);
  CHECK(IsZoomed(window.hwnd));
  look(window, 4, "maximised again");
  show_resized_as(window, SW_RESTORE);
  look(window, 5, "as it was");
  destroy_window(window);
}

// The window within knows nothing of it.
void minimised_frame() {
  begin_scene(__func__);
  const HWND frame = make_frame({500, 200, 600, 500});
  const gl_window window = make_window({50, 60, 430, 310}, frame);
  look(window, 1, "made");
  show_as(frame, SW_MINIMIZE);
  paint_frames(window, 2);
  show_as(frame, SW_RESTORE);
  look(window, 2, "restored");
  show_frame(frame, "frame restored");
  show_as(frame, SW_HIDE);
  paint_frames(window, 2);
  move_window(frame, {430, 260, 620, 480});
  show_as(frame, SW_SHOWNA);
  look(window, 3, "shown");
  show_frame(frame, "frame shown");
  show_as(frame, SW_MAXIMIZE);
  look(window, 4, "frame at its largest");
  destroy_window(window);
  CHECK(DestroyWindow(frame));
}

// Outside of all parts, on each side, with frames there and on the way.
void window_off_the_desktop() {
  begin_scene(__func__);
  place at = over_all;
  const gl_window window = make_window(at);
  look(window, 0, "made");
  const struct {
    const char* back;
    place off;
  } sides[] = {{"from the left", {-700, 270, 501, 377}},
               {"from above", {560, -500, 501, 377}},
               {"from the right", {1900, 100, 501, 377}},
               {"from below", {300, 1100, 501, 377}},
               {"from the corner", {-2000, -2000, 501, 377}}};
  int number = 1;
  for (const auto& side : sides) {
    travel(window, at, side.off, 5);
    paint_frames(window, 2);
    at = {over_all.left - 13 * number, over_all.top + 9 * number, over_all.width, over_all.height};
    travel(window, side.off, at, 5);
    look(window, number++, side.back);
  }
  destroy_window(window);
}

void window_made_off_the_desktop() {
  begin_scene(__func__);
  const place off = {2500, 300, 501, 377};
  const gl_window window = make_window(off);
  paint_frames(window, 2);
  pump(30);
  move_window(window.hwnd, over_all);
  look(window, 1, "moved in");
  destroy_window(window);
}

void set_parent(HWND hwnd, HWND parent, const place& at) {
  const LONG style = GetWindowLongA(hwnd, GWL_STYLE);
  if (!parent) CHECK(SetParent(hwnd, nullptr) != nullptr);
  SetWindowLongA(hwnd, GWL_STYLE, parent ? (style & ~WS_POPUP) | WS_CHILD : (style & ~WS_CHILD) | WS_POPUP);
  if (parent) CHECK(SetParent(hwnd, parent) != nullptr);
  move_window(hwnd, at);
}

void window_of_another_frame() {
  begin_scene(__func__);
  const HWND first = make_frame({90, 60, 560, 430}), second = make_frame({690, 330, 620, 510});
  const gl_window window = make_window({50, 60, 430, 310}, first);
  look(window, 1, "in the first");
  set_parent(window.hwnd, second, {40, 30, 450, 330});
  look(window, 2, "in the second");
  show_frame(second, "second");
  show_frame(first, "first without");
  move_window(second, {520, 180, 620, 510});
  // A frame that the window had not at its first binding is not followed: the parts keep their places in the window.
  paint_and_show(window, 3, "second moved");
  show_frame(second, "second after its move");
  set_parent(window.hwnd, nullptr, over_all);
  look(window, 4, "alone");
  move_window(window.hwnd, {610, 240, 470, 390});
  look(window, 5, "alone, moved");
  set_parent(window.hwnd, first, {20, 40, 480, 350});
  look(window, 6, "in the first again");
  show_frame(first, "first again");
  destroy_window(window);
  CHECK(DestroyWindow(second));
  CHECK(DestroyWindow(first));
}

// A frame with the window inside of a panel goes over the seams and changes its size, with a frame drawn at each step;
// first it cuts the window off, then the window grows with it.
void window_in_a_frame_that_travels() {
  begin_scene(__func__);
  const HWND frame = make_frame({40, 30, 460, 350});
  const HWND panel = CreateWindowExA(0, "STATIC", "", WS_CHILD | WS_VISIBLE | WS_CLIPCHILDREN, 20, 30, 1000, 700, frame,
                                     nullptr, GetModuleHandleA(nullptr), nullptr);
  const gl_window window = make_window({10, 20, 400, 280}, panel);
  look(window, 0, "made");
  const struct {
    const char *window, *frame;
    place at;
    int width, height;  // of the window
  } stops[] = {{"over x", "frame over x", {610, 70, 460, 350}, 400, 280},
               {"over y", "frame over y", {1090, 300, 480, 370}, 420, 300},
               {nullptr, "frame cuts off", {620, 310, 310, 220}, 420, 300},
               {"larger", "larger frame", {330, 160, 800, 600}, 700, 480},
               {"smaller", "smaller frame", {600, 400, 420, 330}, 340, 240}};
  place from = {40, 30, 460, 350};
  int number = 1;
  for (const auto& stop : stops) {
    for (int i = 1; i <= 6; ++i) {
      move_window(frame, on_the_way(from, stop.at, i, 6));
      if (i == 3) move_window(window.hwnd, {10, 20, stop.width, stop.height});
      paint_frames(window, 1);
      pump(0);
    }
    from = stop.at;
    if (stop.window) {
      look(window, number, stop.window);
    } else {
      paint_frames(window, 1);
    }
    show_frame(frame, stop.frame);
    ++number;
  }
  destroy_window(window);
  CHECK(DestroyWindow(frame));
}

// The screen is read while the parts are still at work on what was swapped, and the window changes its place and size
// in between: nobody who draws, moves or reads may wait for another for ever.
void screen_read_meanwhile() {
  begin_scene(__func__);
  const gl_window window = make_window(over_all);
  for (int i = 0; i < 40; ++i) {
    move_window(window.hwnd,
                {over_all.left + i % 11, over_all.top - i % 13, over_all.width - i % 9, over_all.height + i % 8});
    paint_frames(window, 3);
    glFlush();
    screen_picture(window.hwnd);
  }
  move_window(window.hwnd, over_all);
  let_wine_resize(window);
  look(window, 1, "not read any more");
  destroy_window(window);
}

}  // namespace

const scene_group window_state_scenes = {"window_states",
                                         {{"emptied_window", emptied_window},
                                          {"window_made_empty", window_made_empty},
                                          {"minimised_window", minimised_window},
                                          {"minimised_frame", minimised_frame},
                                          {"window_off_the_desktop", window_off_the_desktop},
                                          {"window_made_off_the_desktop", window_made_off_the_desktop},
                                          {"window_of_another_frame", window_of_another_frame},
                                          {"window_in_a_frame_that_travels", window_in_a_frame_that_travels},
                                          {"screen_read_meanwhile", screen_read_meanwhile}}};
