// Several windows and contexts, and contexts that change hands.
#include "painting.h"

namespace {

constexpr place over_all = {560, 270, 501, 377};  // over 800,450

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

// A call that repeats the binding changes nothing, and is refused when spanned in the basic mode.
void bound_twice() {
  begin_scene(__func__);
  const gl_window window = make_window(over_all);
  paint_and_show(window, 1, "first");
  CHECK_EQUAL(wglMakeCurrent(window.hdc, window.context), is_basic() ? FALSE : TRUE);
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

// So many have a record in the library; of the others the application's own window must show the picture.
constexpr int records = 64;

void many_contexts() {
  begin_scene(__func__);
  constexpr int count = 70;
  gl_window window = make_window(over_all);
  const HGLRC first = window.context;
  std::vector<HGLRC> contexts = {first};
  while (contexts.size() < count) contexts.push_back(wglCreateContext(window.hdc));
  for (const HGLRC context : contexts) CHECK(context != nullptr);
  paint_and_show(window, 1, "the first");
  int number = 2;
  for (const int index : {records, count - 1}) {
    window.context = contexts[index];
    make_current(window);
    paint(window.hwnd, number++);
    show_without_parts(window, index == records ? "the first without parts" : "the last");
    paint(window.hwnd, number++);
    show_without_parts(window, index == records ? "the same again" : "the last again");
  }
  window.context = contexts[records - 1];
  make_current(window);
  paint_and_show(window, number++, "the last with parts");
  CHECK(wglMakeCurrent(nullptr, nullptr));
  for (int i = 1; i < count; ++i) CHECK(wglDeleteContext(contexts[i]));
  // Their places can be taken again.
  window.context = wglCreateContext(window.hdc);
  make_current(window);
  paint_and_show(window, number++, "a new one");
  CHECK(wglMakeCurrent(nullptr, nullptr));
  CHECK(wglDeleteContext(window.context));
  window.context = first;
  destroy_window(window);
}

constexpr GLuint list = 9, other_list = 8, texture = 5;

void compile_star(GLuint number) {
  glNewList(number, GL_COMPILE);
  glBegin(GL_TRIANGLES);
  for (int i = 0; i < 5; ++i) {
    glVertex2f(-0.9f + 0.3f * static_cast<float>(i), -0.8f);
    glVertex2f(0.9f, -0.7f + 0.3f * static_cast<float>(i));
    glVertex2f(-0.2f, 0.9f - 0.1f * static_cast<float>(i));
  }
  glEnd();
  glEndList();
}

// 16 x 16 texels, `shade` and stripes.
void make_texture(GLubyte shade) {
  GLubyte texels[16][16][3];
  for (int y = 0; y < 16; ++y) {
    for (int x = 0; x < 16; ++x) {
      texels[y][x][0] = shade;
      texels[y][x][1] = static_cast<GLubyte>(15 * x);
      texels[y][x][2] = static_cast<GLubyte>(y % 4 < 2 ? 250 : 40);
    }
  }
  glBindTexture(GL_TEXTURE_2D, texture);
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
  glTexImage2D(GL_TEXTURE_2D, 0, GL_RGB8, 16, 16, 0, GL_RGB, GL_UNSIGNED_BYTE, texels);
}

// The texture over the lower left of the window, and the list's outlines over all of it.
void draw_objects(float red) {
  glClearColor(red, 0.3f, 0.2f, 1);
  glClear(GL_COLOR_BUFFER_BIT);
  glPolygonMode(GL_FRONT_AND_BACK, GL_FILL);
  glEnable(GL_TEXTURE_2D);
  glBindTexture(GL_TEXTURE_2D, texture);
  glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_REPLACE);
  glBegin(GL_QUADS);
  for (int i = 0; i < 4; ++i) {
    const bool right = i == 1 || i == 2, upper = i > 1;
    glTexCoord2i(right, upper);
    glVertex2f(right ? 0.41f : -0.93f, upper ? 0.37f : -0.87f);
  }
  glEnd();
  glDisable(GL_TEXTURE_2D);
  glColor3f(0.9f, red, 0.8f);
  glPolygonMode(GL_FRONT_AND_BACK, GL_LINE);
  glLineWidth(3);
  glCallList(list);
}

void show_objects(const gl_window& window, float red, const char* step) {
  draw_objects(red);
  show(window, step);
}

void note_objects(const char* where) {
  note("%s: lists %d %d, texture %d", where, glIsList(list), glIsList(other_list), glIsTexture(texture));
}

// The one that shares has long been drawn with and has objects, and is deleted before the other.
void shared_after_use() {
  begin_scene(__func__);
  const gl_window first = make_window({620, 40, 400, 330});
  gl_window second = make_bare_window({540, 400, 480, 350});
  second.context = wglCreateContext(second.hdc);
  compile_star(list);
  make_texture(120);
  show_objects(first, 0.1f, "made here");
  CHECK(wglShareLists(first.context, second.context));
  make_current(second);
  note_objects("there");
  show_objects(second, 0.6f, "used there");
  glDeleteLists(list, 1);
  compile_star(other_list);
  make_texture(220);
  make_current(first);
  note_objects("here");
  compile_star(list);
  show_objects(first, 0.2f, "changed there");
  destroy_window(first);
  make_current(second);
  note_objects("alone");
  show_objects(second, 0.4f, "alone");
  destroy_window(second);
}

// Neither was current before, and no thread has drawn anything.
void shared_before_use() {
  begin_scene(__func__);
  gl_window first = make_bare_window({620, 40, 400, 330});
  gl_window second = make_bare_window({540, 400, 480, 350});
  first.context = wglCreateContext(first.hdc);
  second.context = wglCreateContext(second.hdc);
  CHECK(wglShareLists(first.context, second.context));
  make_current(second);
  compile_star(list);
  make_texture(80);
  show_objects(second, 0.5f, "made there");
  make_current(first);
  note_objects("here");
  show_objects(first, 0.3f, "used here");
  destroy_window(second);
  destroy_window(first);
}

// Each keeps its own state and its own objects of the same names, and the window shows what was drawn last.
void two_contexts_for_one_window() {
  begin_scene(__func__);
  const gl_window first = make_window(over_all);
  gl_window second = first;
  compile_star(list);
  make_texture(200);
  show_objects(first, 0.1f, "first");
  second.context = wglCreateContext(second.hdc);
  make_current(second);
  note_objects("second");
  paint_and_show(second, 2, "second");
  glNewList(list, GL_COMPILE);
  glRectf(-0.71f, -0.52f, 0.33f, 0.64f);
  glEndList();
  make_current(first);
  show_objects(first, 0.5f, "first again");
  move_window(first.hwnd, {over_all.left + 40, over_all.top - 30, over_all.width + 30, over_all.height});
  make_current(second);
  paint(second.hwnd, 3);
  glMatrixMode(GL_PROJECTION);
  glLoadIdentity();
  glCallList(list);
  show(second, "second, moved");
  CHECK(wglDeleteContext(second.context));
  make_current(first);
  glViewport(0, 0, over_all.width + 30, over_all.height);
  show_objects(first, 0.8f, "first alone");
  destroy_window(first);
}

// What is drawn to a window that is gone reaches nobody and harms nothing.
void window_gone_before_context() {
  begin_scene(__func__);
  const gl_window first = make_window(over_all);
  paint_and_show(first, 1, "first");
  gl_window second = make_bare_window({540, 300, 480, 350});
  second.context = first.context;
  ReleaseDC(first.hwnd, first.hdc);
  CHECK(DestroyWindow(first.hwnd));
  paint(second.hwnd, 3);
  SwapBuffers(first.hdc);
  glFinish();
  make_current(second);
  paint_and_show(second, 2, "second");
  destroy_window(second);
}

}  // namespace

const scene_group context_scenes = {"contexts",
                                    {{"two_windows", two_windows},
                                     {"one_context_for_two_windows", one_context_for_two_windows},
                                     {"two_contexts_for_one_window", two_contexts_for_one_window},
                                     {"bound_twice", bound_twice},
                                     {"released", released},
                                     {"deleted_while_current", deleted_while_current},
                                     {"many_contexts", many_contexts},
                                     {"shared_before_use", shared_before_use},
                                     {"shared_after_use", shared_after_use},
                                     {"window_gone_before_context", window_gone_before_context}}};
