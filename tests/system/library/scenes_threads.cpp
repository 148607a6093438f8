// Several threads that draw, and contexts and windows that they take from each other.
#include <atomic>

#include "painting.h"
#include "threads.h"

namespace {

constexpr place over_all = {560, 270, 501, 377};  // over 800,450

struct painter {
  place at;
  int number;
  HANDLE thread;
};

constexpr int painters_at_once = 2;
std::atomic<int> painted;
std::atomic<int> turn;

// Takes messages until it is the turn of `number`.
void await_turn(int number) {
  const DWORD start = GetTickCount();
  while (turn.load() != number && GetTickCount() - start < 60000) pump(5);
  CHECK_EQUAL(turn.load(), number);
}

// Frames of its own window, which moves, and then a picture, one thread after the other. Nobody moves or destroys a
// window with parts while another thread reads the screen: under Wine the two can wait for each other for ever.
DWORD paint_on_thread(void* argument) {
  const auto* self = static_cast<const painter*>(argument);
  const gl_window window = make_window(self->at);
  for (int i = 0; i < 40; ++i) {
    paint(window.hwnd, self->number + i);
    CHECK(SwapBuffers(window.hdc));
    place at = self->at;
    at.left += 3 * i;
    move_window(window.hwnd, at);
    pump(0);
  }
  if (painted.fetch_add(1) + 1 == painters_at_once) turn = 1;
  await_turn(self->number);
  const std::string step = "thread " + std::to_string(self->number);
  paint_and_show(window, 50 + self->number, step.c_str());
  turn.fetch_add(1);
  await_turn(painters_at_once + 1);
  destroy_window(window);
  return 0;
}

void two_threads() {
  begin_scene(__func__);
  painted = 0;
  turn = 0;
  painter painters[painters_at_once] = {{{560, 30, 410, 330}, 1, nullptr}, {{500, 390, 430, 340}, 2, nullptr}};
  for (painter& each : painters) each.thread = start_thread(paint_on_thread, &each);
  for (const painter& each : painters) join_thread(each.thread);
}

// What a drawing thread works on with the one that started it, which owns the windows.
struct render_job {
  gl_window window, next;
  HANDLE go, done;  // events, by which the two threads take turns
};

render_job make_job() {
  render_job job = {make_bare_window(over_all), {}, make_event(), make_event()};
  job.window.context = wglCreateContext(job.window.hdc);
  return job;
}

void close_job(const render_job& job) {
  CloseHandle(job.go);
  CloseHandle(job.done);
}

void draw_frames(const gl_window& window, int count) {
  for (int i = 0; i < count; ++i) {
    paint(window.hwnd, 30 + i);
    SwapBuffers(window.hdc);
  }
}

// A window that is gone has no size and no device context.
void draw_to_nothing(int count) {
  for (int i = 0; i < count; ++i) {
    glClear(GL_COLOR_BUFFER_BIT);
    glRectf(-0.5f, -0.5f, 0.5f, 0.5f);
    glFlush();
  }
  glFinish();
}

void render(const gl_window& window, int number, const char* step) {
  make_current(window);
  draw_frames(window, 10);
  paint_and_show(window, number, step);
  CHECK(wglMakeCurrent(nullptr, nullptr));
}

DWORD render_in_turn(void* argument) {
  const auto* job = static_cast<const render_job*>(argument);
  await_event(job->go);
  render(job->window, 1, "another thread");
  SetEvent(job->done);
  await_event(job->go);
  render(job->window, 3, "that thread again, moved");
  return 0;
}

// One thread has the window, another draws to it, and then the first in between.
void render_thread() {
  begin_scene(__func__);
  const render_job job = make_job();
  const HANDLE thread = start_thread(render_in_turn, const_cast<render_job*>(&job));
  SetEvent(job.go);
  await_event(job.done);
  render(job.window, 2, "the window's thread");
  move_window(job.window.hwnd, {over_all.left + 100, over_all.top - 30, over_all.width, over_all.height + 20});
  SetEvent(job.go);
  join_thread(thread);
  close_job(job);
  destroy_window(job.window);
}

DWORD leave_current(void* argument) {
  const auto* window = static_cast<const gl_window*>(argument);
  make_current(*window);
  paint(window->hwnd, 9);
  CHECK(SwapBuffers(window->hdc));
  return 0;
}

// A thread ends with a context current, and with it all that it has made; another takes the context over.
void ended_thread() {
  begin_scene(__func__);
  gl_window window = make_bare_window(over_all);
  window.context = wglCreateContext(window.hdc);
  join_thread(start_thread(leave_current, &window));
  make_current(window);
  paint_and_show(window, 1, "taken over");
  move_window(window.hwnd, {over_all.left - 30, over_all.top + 40, over_all.width, over_all.height});
  paint_and_show(window, 2, "moved");
  destroy_window(window);
}

DWORD draw_while_deleted(void* argument) {
  const auto* job = static_cast<const render_job*>(argument);
  make_current(job->window);
  paint_and_show(job->window, 1, "before");
  SetEvent(job->done);
  await_event(job->go);
  CHECK(wglGetCurrentContext() == job->window.context);
  draw_frames(job->window, 3);
  std::vector<GLubyte> pixels(40 * 30 * 4);
  glReadPixels(0, 0, 40, 30, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
  glDrawPixels(40, 30, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
  // Whatever all this has left behind.
  for (int i = 0; i < 10 && glGetError() != GL_NO_ERROR; ++i) continue;
  CHECK(wglMakeCurrent(nullptr, nullptr));
  make_current(job->window);
  paint(job->window.hwnd, 2);
  show_without_parts(job->window, "bound again");
  CHECK(wglMakeCurrent(nullptr, nullptr));
  note("deleted at last: %d", wglDeleteContext(job->window.context));
  return 0;
}

// The system refuses to delete a context that another thread has current, but the library lets its children go all the
// same: from the next binding on the application's own window shows it.
void deleted_elsewhere() {
  begin_scene(__func__);
  render_job job = make_job();
  const HANDLE thread = start_thread(draw_while_deleted, &job);
  await_event(job.done);
  note("deleted: %d", wglDeleteContext(job.window.context));
  SetEvent(job.go);
  join_thread(thread);
  close_job(job);
  job.window.context = nullptr;
  destroy_window(job.window);
}

DWORD draw_to_a_lost_window(void* argument) {
  const auto* job = static_cast<const render_job*>(argument);
  make_current(job->window);
  paint_and_show(job->window, 1, "first");
  SetEvent(job->done);
  await_event(job->go);
  draw_to_nothing(5);
  SwapBuffers(job->window.hdc);
  make_current(job->next);
  paint_and_show(job->next, 2, "second");
  CHECK(wglMakeCurrent(nullptr, nullptr));
  return 0;
}

// The windows' thread destroys the one that another thread is drawing to.
void window_destroyed_elsewhere() {
  begin_scene(__func__);
  render_job job = make_job();
  job.next = make_bare_window({620, 20, 400, 240});
  job.next.context = job.window.context;
  const HANDLE thread = start_thread(draw_to_a_lost_window, &job);
  await_event(job.done);
  ReleaseDC(job.window.hwnd, job.window.hdc);
  CHECK(DestroyWindow(job.window.hwnd));
  SetEvent(job.go);
  join_thread(thread);
  close_job(job);
  destroy_window(job.next);
}

}  // namespace

const scene_group thread_scenes = {"threads",
                                   {{"two_threads", two_threads},
                                    {"render_thread", render_thread},
                                    {"ended_thread", ended_thread},
                                    {"deleted_elsewhere", deleted_elsewhere},
                                    {"window_destroyed_elsewhere", window_destroyed_elsewhere}}};
