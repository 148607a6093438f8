// Windows that are moved, resized, hidden and made again while they are drawn to.
#include "painting.h"
#include "travelling.h"

namespace {

void moves() {
  begin_scene(__func__);
  visit({{"upper left", {100, 50, 400, 300}},
         {"over x", {601, 77, 400, 300}},
         {"upper right", {1100, 60, 400, 300}},
         {"over y", {1150, 333, 400, 300}},
         {"over all", {639, 251, 400, 300}},
         {"on the seams", {800, 450, 400, 300}},
         {"before the seams", {400, 150, 400, 300}},
         {"lower left", {30, 590, 400, 300}}});
}

void resizes() {
  begin_scene(__func__);
  visit({{"small", {700, 400, 150, 120}},
         {"wide", {200, 400, 1303, 97}},
         {"one part", {200, 100, 301, 202}},
         {"high", {770, 20, 63, 861}},
         {"all", {0, 0, 1600, 900}},
         {"odd", {799, 449, 203, 101}}});
}

// Several changes of the size before anything is drawn again.
void resizes_at_rest() {
  begin_scene(__func__);
  const gl_window window = make_window({600, 300, 420, 310});
  paint_and_show(window, 0, "made");
  for (int i = 1; i <= 3; ++i) {
    for (int k = 1; k <= 4; ++k) {
      const int more = 40 * i + 15 * k;
      move_window(window.hwnd, {600 - more, 300 - more, 420 + 2 * more, 310 + more + k});
      pump(k == 4 ? 50 : 0);
    }
    const std::string step = "size " + std::to_string(i);
    paint_and_show(window, i, step.c_str());
  }
  destroy_window(window);
}

void overhangs() {
  begin_scene(__func__);
  visit({{"left", {-201, 100, 500, 300}},
         {"over the corner", {-77, -55, 1000, 600}},
         {"top", {650, -120, 400, 350}},
         {"right", {1303, 300, 500, 350}},
         {"lower right", {700, 400, 1100, 700}},
         {"larger than all", {-40, -30, 1700, 1000}}});
}

// What has been drawn last must be seen though nothing follows but messages.
void last_frames() {
  begin_scene(__func__);
  const gl_window window = make_window({600, 300, 420, 310});
  paint(window.hwnd, 1);
  show_unread(window, "the first");
  paint_frames(window, 30);
  paint(window.hwnd, 2);
  show_unread(window, "after many");
  paint(window.hwnd, 3);
  glFlush();
  show_unread(window, "flushed");
  move_window(window.hwnd, {620, 310, 440, 290});
  paint(window.hwnd, 4);
  show_unread(window, "moved");
  destroy_window(window);
}

void single_buffer() {
  begin_scene(__func__);
  const gl_window window = make_window({600, 300, 420, 310}, nullptr, single_buffered);
  paint(window.hwnd, 1);
  glFlush();
  show_left_alone(window, "flushed");
  paint(window.hwnd, 2);
  glFinish();
  show_left_alone(window, "finished");
  destroy_window(window);
}

void front_buffer() {
  begin_scene(__func__);
  const gl_window window = make_window({600, 300, 420, 310});
  paint_and_show(window, 1, "swapped");
  glDrawBuffer(GL_FRONT);
  glReadBuffer(GL_FRONT);
  paint(window.hwnd, 2);
  glFlush();
  show_left_alone(window, "flushed");
  glDrawBuffer(GL_BACK);
  glReadBuffer(GL_BACK);
  paint_and_show(window, 3, "swapped again");
  destroy_window(window);
}

void child_window() {
  begin_scene(__func__);
  const HWND frame = make_frame({500, 200, 600, 500});
  const gl_window window = make_window({50, 60, 430, 310}, frame);
  paint_and_show(window, 1, "child");
  show_frame(frame, "frame");
  move_window(frame, {300, 330, 600, 500});
  paint_and_show(window, 2, "child, frame moved");
  show_frame(frame, "frame moved");
  move_window(window.hwnd, {120, 10, 470, 400});
  paint_and_show(window, 3, "child moved");
  show_frame(frame, "frame, child moved");
  move_window(window.hwnd, {250, 220, 470, 400});
  paint_frames(window, 1);
  show_frame(frame, "child cut off");
  destroy_window(window);
  show_frame(frame, "child gone");
  CHECK(DestroyWindow(frame));
}

// A child in a child, with another beside it.
void nested_windows() {
  begin_scene(__func__);
  const HWND frame = make_frame({500, 200, 620, 500});
  const HWND panel = CreateWindowExA(0, "STATIC", "", WS_CHILD | WS_VISIBLE | WS_CLIPCHILDREN, 20, 30, 560, 440, frame,
                                     nullptr, GetModuleHandleA(nullptr), nullptr);
  gl_window windows[2] = {make_window({10, 20, 260, 390}, panel), make_window({290, 40, 250, 380}, panel)};
  const auto paint_both = [&](int number, const char* left, const char* right) {
    CHECK(wglMakeCurrent(windows[0].hdc, windows[0].context));
    paint_and_show(windows[0], number, left);
    CHECK(wglMakeCurrent(windows[1].hdc, windows[1].context));
    paint_and_show(windows[1], number + 1, right);
  };
  paint_both(1, "left", "right");
  show_frame(frame, "frame");
  move_window(frame, {610, 120, 620, 500});
  paint_both(3, "left moved", "right moved");
  show_frame(frame, "frame moved");
  for (const gl_window& window : windows) destroy_window(window);
  CHECK(DestroyWindow(frame));
}

void hidden_window() {
  begin_scene(__func__);
  const gl_window window = make_window({640, 320, 330, 280});
  paint_and_show(window, 1, "shown");
  ShowWindow(window.hwnd, SW_HIDE);
  paint_frames(window, 3);
  pump(100);
  move_window(window.hwnd, {660, 330, 350, 290});
  ShowWindow(window.hwnd, SW_SHOW);
  pump(50);
  paint_and_show(window, 2, "again");
  destroy_window(window);
}

// The first binding finds a window of a single pixel.
void grown_window() {
  begin_scene(__func__);
  const gl_window window = make_window({700, 400, 1, 1});
  ShowWindow(window.hwnd, SW_HIDE);
  paint_frames(window, 1);
  move_window(window.hwnd, {550, 270, 501, 377});
  ShowWindow(window.hwnd, SW_SHOW);
  paint_and_show(window, 1, "grown");
  destroy_window(window);
}

void windows_in_turn() {
  begin_scene(__func__);
  for (int i = 0; i < 6; ++i) {
    const gl_window window = make_window({560 + 20 * i, 270 + 10 * i, 400 + 7 * i, 300 - 9 * i});
    const std::string step = "number " + std::to_string(i);
    paint_and_show(window, i, step.c_str());
    destroy_window(window);
  }
}

}  // namespace

const scene_group window_scenes = {"windows",
                                   {{"moves", moves},
                                    {"resizes", resizes},
                                    {"resizes_at_rest", resizes_at_rest},
                                    {"overhangs", overhangs},
                                    {"last_frames", last_frames},
                                    {"single_buffer", single_buffer},
                                    {"front_buffer", front_buffer},
                                    {"child_window", child_window},
                                    {"nested_windows", nested_windows},
                                    {"hidden_window", hidden_window},
                                    {"grown_window", grown_window},
                                    {"windows_in_turn", windows_in_turn}}};
