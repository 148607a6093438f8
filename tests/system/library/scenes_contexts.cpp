// Several windows, contexts and threads, and contexts that change hands.
#include <atomic>

#include "painting.h"
#include "parts.h"
#include "scene.h"

namespace {

constexpr place over_all = {560, 270, 501, 377};  // over 800,450

void paint_and_show(const gl_window& window, int number, const char* step) {
  paint(window.hwnd, number);
  show(window, step);
}

void make_current(const gl_window& window) {
  CHECK(wglMakeCurrent(window.hdc, window.context));
}

void run_thread(DWORD (*body)(void*), void* argument, HANDLE* thread) {
  *thread = CreateThread(nullptr, 0, body, argument, 0, nullptr);
  CHECK(*thread != nullptr);
}

// Takes messages until the thread has ended.
void join_thread(HANDLE thread) {
  constexpr DWORD limit = 60000;  // ms
  const DWORD start = GetTickCount();
  while (WaitForSingleObject(thread, 0) != WAIT_OBJECT_0 && GetTickCount() - start < limit) pump(10);
  CHECK_EQUAL(WaitForSingleObject(thread, 0), WAIT_OBJECT_0);
  CloseHandle(thread);
}

void two_windows() {
  begin_scene(__func__);
  const gl_window windows[2] = {make_window({620, 40, 400, 330}), make_window({540, 400, 480, 350})};
  for (int round = 0; round < 3; ++round) {
    for (int i = 0; i < 2; ++i) {
      if (wglGetCurrentContext() != windows[i].context) make_current(windows[i]);
      const std::string step = "round " + std::to_string(round) + (i ? " lower" : " upper");
      paint_and_show(windows[i], 2 * round + i, step.c_str());
    }
  }
  // The first moves while the other is drawn to.
  move_window(windows[0].hwnd, {700, 60, 400, 330});
  paint_and_show(windows[1], 7, "lower after a move of the upper");
  make_current(windows[0]);
  paint_and_show(windows[0], 8, "upper moved");
  for (const gl_window& window : windows) destroy_window(window);
}

void one_context_for_two_windows() {
  begin_scene(__func__);
  const gl_window first = make_window({620, 40, 400, 330});
  gl_window second = make_bare_window({540, 400, 480, 350});
  second.context = first.context;
  paint_and_show(first, 1, "first");
  make_current(second);
  paint_and_show(second, 2, "second");
  make_current(first);
  paint_and_show(first, 3, "first again");
  second.context = nullptr;
  destroy_window(second);
  paint_and_show(first, 4, "first alone");
  destroy_window(first);
}

// A call that repeats the binding is refused when spanned, and changes nothing.
void bound_twice() {
  begin_scene(__func__);
  const gl_window window = make_window(over_all);
  paint_and_show(window, 1, "first");
  CHECK_EQUAL(wglMakeCurrent(window.hdc, window.context), expected_parts() ? FALSE : TRUE);
  CHECK(wglGetCurrentContext() == window.context && wglGetCurrentDC() == window.hdc);
  paint_and_show(window, 2, "bound twice");
  const HDC other = GetDC(window.hwnd);
  CHECK(wglMakeCurrent(nullptr, nullptr));
  CHECK(wglMakeCurrent(other, window.context));
  paint_and_show(window, 3, "by another device context");
  ReleaseDC(window.hwnd, other);
  destroy_window(window);
}

void released() {
  begin_scene(__func__);
  const gl_window window = make_window(over_all);
  paint_and_show(window, 1, "before");
  CHECK(wglMakeCurrent(window.hdc, nullptr));
  CHECK(wglGetCurrentContext() == nullptr && wglGetCurrentDC() == nullptr);
  // Without a context nothing of this may reach anybody.
  glClearColor(1, 1, 1, 1);
  glClear(GL_COLOR_BUFFER_BIT);
  note("released: error 0x%x, lists %u, lighting %d, vendor %d", glGetError(), glGenLists(1), glIsEnabled(GL_LIGHTING),
       glGetString(GL_VENDOR) != nullptr);
  make_current(window);
  glRecti(0, 0, 50, 50);
  show(window, "bound again");
  CHECK(wglMakeCurrent(nullptr, nullptr));
  make_current(window);
  paint_and_show(window, 2, "painted again");
  destroy_window(window);
}

void deleted_while_current() {
  begin_scene(__func__);
  gl_window window = make_window(over_all);
  paint_and_show(window, 1, "the first");
  CHECK(wglDeleteContext(window.context));
  CHECK(wglGetCurrentContext() == nullptr);
  window.context = wglCreateContext(window.hdc);
  make_current(window);
  paint_and_show(window, 2, "the second");
  destroy_window(window);
}

// The last finds no room in the library's table: the application's own window must show it.
void many_contexts() {
  begin_scene(__func__);
  constexpr int count = 65;
  gl_window window = make_window(over_all);
  const HGLRC first = window.context;
  std::vector<HGLRC> contexts = {first};
  while (contexts.size() < count) contexts.push_back(wglCreateContext(window.hdc));
  for (const HGLRC context : contexts) CHECK(context != nullptr);
  paint_and_show(window, 1, "the first");
  window.context = contexts[count - 1];
  make_current(window);
  paint(window.hwnd, 2);
  show_without_parts(window, "the last");
  paint(window.hwnd, 3);
  show_without_parts(window, "the last again");
  window.context = contexts[count - 2];
  make_current(window);
  paint_and_show(window, 4, "the one before");
  CHECK(wglMakeCurrent(nullptr, nullptr));
  for (int i = 1; i < count; ++i) CHECK(wglDeleteContext(contexts[i]));
  // Their places can be taken again.
  window.context = wglCreateContext(window.hdc);
  make_current(window);
  paint_and_show(window, 5, "a new one");
  CHECK(wglMakeCurrent(nullptr, nullptr));
  CHECK(wglDeleteContext(window.context));
  window.context = first;
  destroy_window(window);
}

void compile_star(GLuint list) {
  glNewList(list, GL_COMPILE);
  glBegin(GL_TRIANGLES);
  for (int i = 0; i < 5; ++i) {
    glVertex2f(-0.9f + 0.3f * static_cast<float>(i), -0.8f);
    glVertex2f(0.9f, -0.7f + 0.3f * static_cast<float>(i));
    glVertex2f(-0.2f, 0.9f - 0.1f * static_cast<float>(i));
  }
  glEnd();
  glEndList();
}

void draw_shared(const gl_window& window, float red, const char* step) {
  glClearColor(red, 0.3f, 0.2f, 1);
  glClear(GL_COLOR_BUFFER_BIT);
  glColor3f(0.9f, red, 0.8f);
  glPolygonMode(GL_FRONT_AND_BACK, GL_LINE);
  glLineWidth(3);
  glCallList(9);
  show(window, step);
}

void shared_lists() {
  begin_scene(__func__);
  const gl_window first = make_window({620, 40, 400, 330});
  gl_window second = make_bare_window({540, 400, 480, 350});
  second.context = wglCreateContext(second.hdc);
  CHECK(wglShareLists(first.context, second.context));
  compile_star(9);
  draw_shared(first, 0.1f, "made here");
  make_current(second);
  note("list %d", glIsList(9));
  draw_shared(second, 0.6f, "used there");
  glDeleteLists(9, 1);
  compile_star(8);
  make_current(first);
  note("lists %d %d", glIsList(9), glIsList(8));
  destroy_window(second);
  destroy_window(first);
}

struct painter {
  place at;
  int number;
  HANDLE thread;
};

std::atomic<int> turn;

// Takes messages until it is the turn of `number`.
void await_turn(int number) {
  const DWORD start = GetTickCount();
  while (turn.load() != number && GetTickCount() - start < 60000) pump(5);
  CHECK_EQUAL(turn.load(), number);
}

// Frames of its own window, which moves, and then a picture, one thread after the other.
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
  await_turn(self->number);
  const std::string step = "thread " + std::to_string(self->number);
  paint_and_show(window, 50 + self->number, step.c_str());
  turn.fetch_add(1);
  destroy_window(window);
  return 0;
}

void two_threads() {
  begin_scene(__func__);
  turn = 1;
  painter painters[2] = {{{560, 30, 410, 330}, 1, nullptr}, {{500, 390, 430, 340}, 2, nullptr}};
  for (painter& each : painters) run_thread(paint_on_thread, &each, &each.thread);
  for (const painter& each : painters) join_thread(each.thread);
}

struct render_job {
  gl_window window;
  HANDLE go, done;  // events, by which the two threads take turns
};

void await_event(HANDLE event) {
  const DWORD start = GetTickCount();
  while (WaitForSingleObject(event, 0) != WAIT_OBJECT_0) {
    pump(5);
    if (GetTickCount() - start < 60000) continue;
    CHECK_EQUAL(WaitForSingleObject(event, 0), WAIT_OBJECT_0);
    return;
  }
}

void render(const gl_window& window, int number, const char* step) {
  make_current(window);
  for (int i = 0; i < 10; ++i) {
    paint(window.hwnd, 30 + i);
    CHECK(SwapBuffers(window.hdc));
  }
  paint_and_show(window, number, step);
  CHECK(wglMakeCurrent(nullptr, nullptr));
}

DWORD render_in_turn(void* argument) {
  const auto* job = static_cast<const render_job*>(argument);
  await_event(job->go);
  render(job->window, 1, "another thread");
  SetEvent(job->done);
  await_event(job->go);
  pump(100);  // the parts are this thread's windows, and move when it takes messages
  render(job->window, 3, "that thread again, moved");
  return 0;
}

// One thread has the window, another draws to it, and then the first in between.
void render_thread() {
  begin_scene(__func__);
  gl_window window = make_bare_window(over_all);
  window.context = wglCreateContext(window.hdc);
  render_job job = {window, CreateEventA(nullptr, FALSE, FALSE, nullptr), CreateEventA(nullptr, FALSE, FALSE, nullptr)};
  HANDLE thread;
  run_thread(render_in_turn, &job, &thread);
  SetEvent(job.go);
  await_event(job.done);
  render(window, 2, "the window's thread");
  move_window(window.hwnd, {over_all.left + 100, over_all.top - 30, over_all.width, over_all.height + 20});
  SetEvent(job.go);
  join_thread(thread);
  CloseHandle(job.go);
  CloseHandle(job.done);
  destroy_window(window);
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
  HANDLE thread;
  run_thread(leave_current, &window, &thread);
  join_thread(thread);
  make_current(window);
  paint_and_show(window, 1, "taken over");
  move_window(window.hwnd, {over_all.left - 30, over_all.top + 40, over_all.width, over_all.height});
  paint_and_show(window, 2, "moved");
  destroy_window(window);
}

void window_gone_before_context() {
  begin_scene(__func__);
  const gl_window first = make_window(over_all);
  paint_and_show(first, 1, "first");
  gl_window second = make_bare_window({540, 300, 480, 350});
  second.context = first.context;
  ReleaseDC(first.hwnd, first.hdc);
  CHECK(DestroyWindow(first.hwnd));
  make_current(second);
  paint_and_show(second, 2, "second");
  destroy_window(second);
}

}  // namespace

const scene_group context_scenes = {"contexts",
                                    {{"two_windows", two_windows},
                                     {"one_context_for_two_windows", one_context_for_two_windows},
                                     {"bound_twice", bound_twice},
                                     {"released", released},
                                     {"deleted_while_current", deleted_while_current},
                                     {"many_contexts", many_contexts},
                                     {"shared_lists", shared_lists},
                                     {"two_threads", two_threads},
                                     {"render_thread", render_thread},
                                     {"ended_thread", ended_thread},
                                     {"window_gone_before_context", window_gone_before_context}}};
