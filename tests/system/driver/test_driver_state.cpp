// What a program can ask of a context: nothing of a share of the window, of a scissor box that is cut to it, or of a
// spared drawable shows.
#include <climits>
#include <initializer_list>

#include "driver.h"

namespace {

struct box {
  GLint x, y, width, height;
};

// A child, which stands for the application's window, or shows a share of the one that it lies in.
constexpr int width = 120, height = 90;
constexpr int whole_width = 200, whole_height = 150;

gl_window whole, window;
HGLRC context;

void make_first() {
  whole = make_window(nullptr, 60, 60, whole_width, whole_height, true);
  window = make_window(whole.hwnd, 30, 43, width, height, true);
  context = driver.wglCreateContext(window.hdc);
  CHECK(driver.wglMakeCurrent(window.hdc, context));
  bind_extensions();
}

// A context of its own for each case, on the same window.
HGLRC fresh() {
  HGLRC made = driver.wglCreateContext(window.hdc);
  CHECK(made != nullptr);
  CHECK(driver.wglMakeCurrent(window.hdc, made));
  return made;
}

void discard(HGLRC made) {
  CHECK_EQUAL(driver.glGetError(), GL_NO_ERROR);
  CHECK(driver.wglMakeCurrent(nullptr, nullptr));
  CHECK(driver.wglDeleteContext(made));
}

// From now on the context draws to a drawable of the whole window, in which its own is the share with this corner.
void show_share(int left, int bottom) {
  driver.glViewportOffsetZ4(-left, -bottom);
  driver.glDrawableSizeZ4(whole_width, whole_height);
}

void show_whole() {
  driver.glViewportOffsetZ4(0, 0);
  driver.glDrawableSizeZ4(width, height);
}

box ask(GLenum name) {
  GLint values[4] = {-77, -77, -77, -77};
  driver.glGetIntegerv(name, values);
  return {values[0], values[1], values[2], values[3]};
}

void check_box(int line, const box& found, const box& wanted) {
  check_equal(__FILE__, line, "x", found.x, wanted.x);
  check_equal(__FILE__, line, "y", found.y, wanted.y);
  check_equal(__FILE__, line, "width", found.width, wanted.width);
  check_equal(__FILE__, line, "height", found.height, wanted.height);
}

#define CHECK_BOX(found, ...) check_box(__LINE__, found, box __VA_ARGS__)

// Where the scissor box begins in what the child shows, found by a clear through it.
struct corner {
  int x, y;
};

corner find_corner() {
  driver.glDisable(GL_SCISSOR_TEST);
  driver.glClearColor(0, 0, 0, 0);
  driver.glClear(GL_COLOR_BUFFER_BIT);
  driver.glEnable(GL_SCISSOR_TEST);
  driver.glClearColor(1, 1, 1, 1);
  driver.glClear(GL_COLOR_BUFFER_BIT);
  driver.glDisable(GL_SCISSOR_TEST);
  CHECK(!driver.glIsEnabled(GL_SCISSOR_TEST));
  static u32 pixels[width * height];
  driver.glReadPixels(0, 0, width, height, GL_RGBA, GL_UNSIGNED_BYTE, pixels);
  for (int i = 0; i < width * height; ++i) {
    if (pixels[i] & 0xffffff) return {i % width, i / width};
  }
  return {-1, -1};
}

void check_corner(int line, int x, int y) {
  const corner found = find_corner();
  check_equal(__FILE__, line, "corner x", found.x, x);
  check_equal(__FILE__, line, "corner y", found.y, y);
}

#define CHECK_CORNER(x, y) check_corner(__LINE__, x, y)

template <class Value>
void check_values(int line, void (*get)(GLenum, Value*), GLenum name, Value a, Value b, Value c, Value d) {
  Value values[5] = {55, 55, 55, 55, 55};
  get(name, values);
  const Value wanted[5] = {a, b, c, d, 55};
  for (int i = 0; i < 5; ++i) {
    if (values[i] != wanted[i]) {
      check_equal(__FILE__, line, "a value of a query", static_cast<long long>(values[i]),
                  static_cast<long long>(wanted[i]));
    }
  }
}

void query_types() {
  HGLRC made = fresh();
  show_share(30, 17);
  driver.glViewport(30, 5, 60, 50);
  driver.glScissor(-17, 0, 61, 51);
  driver.glWindowPos3i(9, 0, 1);
  check_values<GLint>(__LINE__, driver.glGetIntegerv, GL_VIEWPORT, 30, 5, 60, 50);
  check_values<GLfloat>(__LINE__, driver.glGetFloatv, GL_VIEWPORT, 30, 5, 60, 50);
  check_values<GLdouble>(__LINE__, driver.glGetDoublev, GL_SCISSOR_BOX, -17, 0, 61, 51);
  check_values<GLboolean>(__LINE__, driver.glGetBooleanv, GL_SCISSOR_BOX, 1, 0, 1, 1);
  check_values<GLfloat>(__LINE__, driver.glGetFloatv, GL_CURRENT_RASTER_POSITION, 9, 0, 1, 1);
  check_values<GLdouble>(__LINE__, driver.glGetDoublev, GL_CURRENT_RASTER_POSITION, 9, 0, 1, 1);
  check_values<GLboolean>(__LINE__, driver.glGetBooleanv, GL_CURRENT_RASTER_POSITION, 1, 0, 1, 1);
  driver.glViewport(30, 17, 60, 50);
  check_values<GLboolean>(__LINE__, driver.glGetBooleanv, GL_VIEWPORT, 1, 1, 1, 1);
  driver.glViewport(0, -17, 60, 50);
  check_values<GLboolean>(__LINE__, driver.glGetBooleanv, GL_VIEWPORT, 0, 1, 1, 1);
  if (driver.glGetIntegeri_v != nullptr) {
    GLint values[4] = {};
    driver.glGetIntegeri_v(GL_SCISSOR_BOX, 0, values);
    CHECK_BOX((box{values[0], values[1], values[2], values[3]}), {-17, 0, 61, 51});
    GLint64 wide[4] = {};
    driver.glGetInteger64i_v(GL_SCISSOR_BOX, 3, wide);
    CHECK_EQUAL(wide[0], -17);
    CHECK_EQUAL(wide[2], 61);
  }
  if (driver.glGetIntegerIndexedvEXT != nullptr) {
    GLint values[4] = {};
    driver.glGetIntegerIndexedvEXT(GL_VIEWPORT, 0, values);
    CHECK_BOX((box{values[0], values[1], values[2], values[3]}), {0, -17, 60, 50});
  }
  discard(made);
}

// A query that fails leaves the program's memory alone.
void failed_query() {
  HGLRC made = fresh();
  show_share(30, 17);
  driver.glScissor(5, 6, 40, 41);
  driver.glBegin(GL_POINTS);
  const box untouched = ask(GL_SCISSOR_BOX);
  driver.glScissor(1, 2, 3, 4);
  driver.glEnable(GL_SCISSOR_TEST);
  driver.glEnd();
  CHECK_BOX(untouched, {-77, -77, -77, -77});
  CHECK_EQUAL(driver.glGetError(), GL_INVALID_OPERATION);
  CHECK_BOX(ask(GL_SCISSOR_BOX), {5, 6, 40, 41});
  CHECK(!driver.glIsEnabled(GL_SCISSOR_TEST));
  discard(made);
}

// Both calls are in force together, from the second on.
void share_at_once() {
  HGLRC made = fresh();
  driver.glViewport(1, 2, 30, 40);
  driver.glScissor(50, 60, 30, 40);
  CHECK_CORNER(50, 60);
  driver.glViewportOffsetZ4(-7, -9);
  CHECK_CORNER(50, 60);
  driver.glDrawableSizeZ4(whole_width, whole_height);
  CHECK_CORNER(43, 51);
  CHECK_BOX(ask(GL_SCISSOR_BOX), {50, 60, 30, 40});
  CHECK_BOX(ask(GL_VIEWPORT), {1, 2, 30, 40});
  show_share(40, 50);
  CHECK_CORNER(10, 10);
  CHECK_BOX(ask(GL_SCISSOR_BOX), {50, 60, 30, 40});
  show_whole();
  CHECK_CORNER(50, 60);
  discard(made);
}

// What is asked for, by any of the queries, is what was set, and what is enabled is drawn through.
void scissor_is_the_programs() {
  HGLRC made = fresh();
  show_share(30, 17);
  CHECK(!driver.glIsEnabled(GL_SCISSOR_TEST));
  check_values<GLint>(__LINE__, driver.glGetIntegerv, GL_SCISSOR_BOX, 0, 0, whole_width, whole_height);
  driver.glEnable(GL_SCISSOR_TEST);
  driver.glScissor(0, 0, 1000, 1000);
  CHECK(driver.glIsEnabled(GL_SCISSOR_TEST));
  GLboolean enabled = 7;
  driver.glGetBooleanv(GL_SCISSOR_TEST, &enabled);
  CHECK_EQUAL(enabled, GL_TRUE);
  CHECK_BOX(ask(GL_SCISSOR_BOX), {0, 0, 1000, 1000});
  CHECK(driver.glIsEnabledi(GL_SCISSOR_TEST, 0));
  driver.glDisablei(GL_SCISSOR_TEST, 0);
  CHECK(!driver.glIsEnabledIndexedEXT(GL_SCISSOR_TEST, 0));
  CHECK(!driver.glIsEnabled(GL_SCISSOR_TEST));
  driver.glScissor(INT_MAX, INT_MIN, INT_MAX, 5);
  CHECK_BOX(ask(GL_SCISSOR_BOX), {INT_MAX, INT_MIN, INT_MAX, 5});
  driver.glScissor(1, 2, -1, 5);
  CHECK_EQUAL(driver.glGetError(), GL_INVALID_VALUE);
  CHECK_BOX(ask(GL_SCISSOR_BOX), {INT_MAX, INT_MIN, INT_MAX, 5});
  discard(made);
}

// A list that sets, or leaves alone, what was cut when it was compiled or is when it is called.
void scissor_in_lists() {
  HGLRC made = fresh();
  const GLuint list = driver.glGenLists(2);
  driver.glNewList(list, GL_COMPILE);
  driver.glScissor(60, 70, 20, 30);
  driver.glEndList();
  driver.glNewList(list + 1, GL_COMPILE);
  driver.glEnable(GL_SCISSOR_TEST);
  driver.glClear(GL_COLOR_BUFFER_BIT);
  driver.glEndList();
  show_share(30, 17);
  driver.glCallList(list);
  CHECK_BOX(ask(GL_SCISSOR_BOX), {60, 70, 20, 30});
  CHECK_CORNER(30, 53);
  driver.glClearColor(0, 0, 0, 0);
  driver.glClear(GL_COLOR_BUFFER_BIT);
  driver.glClearColor(1, 1, 1, 1);
  const GLuint both[2] = {list, list + 1};
  driver.glCallLists(2, GL_UNSIGNED_INT, both);
  CHECK(driver.glIsEnabled(GL_SCISSOR_TEST));
  u32 found[2] = {};
  driver.glReadPixels(29, 53, 2, 1, GL_RGBA, GL_UNSIGNED_BYTE, found);
  CHECK_EQUAL(found[0] & 0xffffff, 0);
  CHECK_EQUAL(found[1] & 0xffffff, 0xffffff);
  driver.glNewList(list, GL_COMPILE_AND_EXECUTE);
  driver.glScissor(70, 70, 20, 30);
  CHECK_BOX(ask(GL_SCISSOR_BOX), {70, 70, 20, 30});
  driver.glEndList();
  CHECK_BOX(ask(GL_SCISSOR_BOX), {70, 70, 20, 30});
  CHECK_CORNER(40, 53);
  driver.glDeleteLists(list, 2);
  discard(made);
}

// Where the raster position is, also one that was there before.
void raster_position_stays() {
  HGLRC made = fresh();
  driver.glViewport(0, 0, width, height);
  driver.glWindowPos2i(40, 30);
  driver.glColor3f(0, 1, 0);
  show_share(15, 6);
  CHECK_BOX(ask(GL_CURRENT_RASTER_POSITION), {40, 30, 0, 1});
  driver.glClear(GL_COLOR_BUFFER_BIT);
  const u32 dot = 0xff123456;
  driver.glDrawPixels(1, 1, GL_RGBA, GL_UNSIGNED_BYTE, &dot);
  u32 found = 0;
  driver.glReadPixels(25, 24, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, &found);
  CHECK_EQUAL(found & 0xffffff, 0x123456);
  // Its colour is that of the time when it was set.
  GLfloat color[4] = {};
  driver.glGetFloatv(GL_CURRENT_RASTER_COLOR, color);
  CHECK_EQUAL(color[0], 1);
  discard(made);
}

// What a program sees while it pushes and pops, with a share that moves meanwhile or with none.
struct trace {
  box seen[12];
  int count;
};

void note(trace* t) {
  for (const GLenum name : {GL_VIEWPORT, GL_SCISSOR_BOX, GL_CURRENT_RASTER_POSITION}) t->seen[t->count++] = ask(name);
}

void push_and_pop(trace* t, GLbitfield outer, GLbitfield inner, bool shared) {
  HGLRC made = fresh();
  if (shared) show_share(3, 4);
  driver.glViewport(11, 12, 50, 51);
  driver.glScissor(21, 22, 52, 53);
  driver.glWindowPos2i(31, 32);
  driver.glPushAttrib(outer);
  driver.glViewport(1, 2, 15, 16);
  driver.glPushAttrib(inner);
  driver.glViewport(0, 0, 1, 1);
  driver.glScissor(0, 0, 2, 2);
  driver.glWindowPos2i(7, 8);
  driver.glColor3f(0.5f, 0, 0);
  note(t);
  if (shared) show_share(20, 30);
  note(t);
  driver.glPopAttrib();
  note(t);
  driver.glPopAttrib();
  note(t);
  CHECK_EQUAL(driver.glGetError(), GL_NO_ERROR);
  driver.glPopAttrib();
  CHECK_EQUAL(driver.glGetError(), GL_STACK_UNDERFLOW);
  CHECK_BOX(ask(GL_VIEWPORT), {t->seen[9].x, t->seen[9].y, t->seen[9].width, t->seen[9].height});
  discard(made);
}

// The host is the judge of what a pop brings back. Of the scissor box it may leave out what did not change since the
// last push, though it has since an earlier one; the driver's own changes of it bring back all that is due.
void popped_after_move() {
  const GLbitfield masks[] = {GL_VIEWPORT_BIT, GL_SCISSOR_BIT, GL_CURRENT_BIT, GL_LIGHTING_BIT, GL_ALL_ATTRIB_BITS};
  for (GLbitfield outer : masks) {
    for (GLbitfield inner : masks) {
      trace plain = {}, moved = {};
      push_and_pop(&plain, outer, inner, false);
      push_and_pop(&moved, outer, inner, true);
      const box set = {21, 22, 52, 53}, last = {0, 0, 2, 2};
      plain.seen[7] = inner & GL_SCISSOR_BIT ? set : last;
      plain.seen[10] = (inner | outer) & GL_SCISSOR_BIT ? set : last;
      for (int i = 0; i < plain.count; ++i) {
        const box& wanted = plain.seen[i];
        CHECK_BOX(moved.seen[i], {wanted.x, wanted.y, wanted.width, wanted.height});
      }
      CHECK_EQUAL(plain.count, 12);
    }
  }
}

// Pushed before there ever was a share.
void popped_after_first_share() {
  HGLRC made = fresh();
  driver.glScissor(5, 6, 40, 41);
  driver.glPushAttrib(GL_ALL_ATTRIB_BITS);
  show_share(2, 4);
  driver.glScissor(0, 0, 2, 2);
  driver.glPopAttrib();
  CHECK_BOX(ask(GL_SCISSOR_BOX), {5, 6, 40, 41});
  CHECK_CORNER(3, 2);
  discard(made);
}

// A stack that is full keeps what it has.
void attribute_overflow() {
  HGLRC made = fresh();
  GLint depth = 0;
  driver.glGetIntegerv(GL_MAX_ATTRIB_STACK_DEPTH, &depth);
  driver.glScissor(5, 6, 40, 41);
  for (GLint i = 0; i < depth; ++i) driver.glPushAttrib(GL_SCISSOR_BIT);
  CHECK_EQUAL(driver.glGetError(), GL_NO_ERROR);
  show_share(2, 4);
  driver.glPushAttrib(GL_SCISSOR_BIT);
  CHECK_EQUAL(driver.glGetError(), GL_STACK_OVERFLOW);
  for (GLint i = 0; i < depth; ++i) driver.glPopAttrib();
  CHECK_BOX(ask(GL_SCISSOR_BOX), {5, 6, 40, 41});
  CHECK_CORNER(3, 2);
  discard(made);
}

// While a list is compiled nothing of ours may get into it: the cut waits for its end.
void share_while_compiling() {
  HGLRC made = fresh();
  driver.glScissor(5, 6, 40, 41);
  const GLuint list = driver.glGenLists(1);
  driver.glNewList(list, GL_COMPILE);
  show_share(2, 4);
  driver.glPushAttrib(GL_SCISSOR_BIT);
  driver.glScissor(1, 1, 3, 3);
  CHECK_BOX(ask(GL_SCISSOR_BOX), {5, 6, 40, 41});
  driver.glPopAttrib();
  driver.glEndList();
  CHECK_BOX(ask(GL_SCISSOR_BOX), {5, 6, 40, 41});
  CHECK_CORNER(3, 2);
  driver.glCallList(list);
  CHECK_BOX(ask(GL_SCISSOR_BOX), {5, 6, 40, 41});
  CHECK_CORNER(3, 2);
  discard(made);
}

void share_while_feeding_back() {
  HGLRC made = fresh();
  GLfloat buffer[64] = {};
  driver.glScissor(5, 6, 40, 41);
  driver.glFeedbackBuffer(64, GL_2D, buffer);
  driver.glRenderMode(GL_FEEDBACK);
  show_share(2, 4);
  CHECK_EQUAL(driver.glRenderMode(GL_RENDER), 0);
  CHECK_BOX(ask(GL_SCISSOR_BOX), {5, 6, 40, 41});
  CHECK_CORNER(3, 2);
  discard(made);
}

// An object without an image is bound and filled later; nothing may be drawn to it meanwhile.
void incomplete_framebuffer() {
  HGLRC made = fresh();
  driver.glWindowPos2i(20, 30);
  show_share(5, 6);
  driver.glScissor(11, 12, 30, 40);
  GLuint framebuffer = 0;
  driver.glGenFramebuffers(1, &framebuffer);
  driver.glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
  CHECK_EQUAL(driver.glGetError(), GL_NO_ERROR);
  CHECK_BOX(ask(GL_SCISSOR_BOX), {11, 12, 30, 40});
  show_share(9, 10);
  CHECK_EQUAL(driver.glGetError(), GL_NO_ERROR);
  driver.glBindFramebuffer(GL_READ_FRAMEBUFFER, 0);
  driver.glBindFramebuffer(GL_DRAW_FRAMEBUFFER, 0);
  CHECK_EQUAL(driver.glGetError(), GL_NO_ERROR);
  CHECK_BOX(ask(GL_SCISSOR_BOX), {11, 12, 30, 40});
  CHECK_BOX(ask(GL_CURRENT_RASTER_POSITION), {20, 30, 0, 1});
  CHECK_CORNER(2, 2);
  driver.glDeleteFramebuffers(1, &framebuffer);
  discard(made);
}

void initial_boxes() {
  HGLRC made = fresh();
  CHECK_BOX(ask(GL_VIEWPORT), {0, 0, width, height});
  CHECK_BOX(ask(GL_SCISSOR_BOX), {0, 0, width, height});
  driver.glDrawableSizeZ4(-5, 40);
  CHECK_BOX(ask(GL_VIEWPORT), {0, 0, width, height});
  driver.glViewportOffsetZ4(-3, -4);
  driver.glDrawableSizeZ4(400, 300);
  CHECK_BOX(ask(GL_VIEWPORT), {0, 0, 400, 300});
  CHECK_BOX(ask(GL_SCISSOR_BOX), {0, 0, 400, 300});
  driver.glScissor(10, 10, 50, 50);
  CHECK_CORNER(7, 6);
  driver.glScissor(0, 0, 400, 300);
  // A later size is not the first one.
  driver.glDrawableSizeZ4(500, 350);
  CHECK_BOX(ask(GL_VIEWPORT), {0, 0, 400, 300});
  CHECK_BOX(ask(GL_SCISSOR_BOX), {0, 0, 400, 300});
  discard(made);

  made = fresh();
  driver.glViewport(1, 2, 3, 4);
  driver.glDrawableSizeZ4(400, 300);
  CHECK_BOX(ask(GL_VIEWPORT), {1, 2, 3, 4});
  CHECK_BOX(ask(GL_SCISSOR_BOX), {0, 0, 400, 300});
  discard(made);

  made = fresh();
  driver.glScissor(1, 2, 3, 4);
  driver.glDrawableSizeZ4(400, 300);
  CHECK_BOX(ask(GL_VIEWPORT), {0, 0, 400, 300});
  CHECK_BOX(ask(GL_SCISSOR_BOX), {1, 2, 3, 4});
  discard(made);
}

// A viewport that is only compiled does not count as one that was set.
void compiled_viewport() {
  HGLRC made = fresh();
  const GLuint list = driver.glGenLists(1);
  driver.glNewList(list, GL_COMPILE);
  driver.glViewport(1, 2, 3, 4);
  driver.glScissor(1, 2, 3, 4);
  driver.glEndList();
  driver.glDrawableSizeZ4(400, 300);
  CHECK_BOX(ask(GL_VIEWPORT), {0, 0, 400, 300});
  CHECK_BOX(ask(GL_SCISSOR_BOX), {0, 0, 400, 300});
  discard(made);
}

// The initial boxes are those of the first window, also when no call was made while it was bound.
void second_window() {
  gl_window other = make_window(nullptr, 60, 300, 70, 50, false);
  HGLRC made = driver.wglCreateContext(other.hdc);
  CHECK(driver.wglMakeCurrent(other.hdc, made));
  CHECK(driver.wglMakeCurrent(window.hdc, made));
  CHECK_BOX(ask(GL_VIEWPORT), {0, 0, 70, 50});
  driver.glDrawableSizeZ4(400, 300);
  CHECK_BOX(ask(GL_VIEWPORT), {0, 0, 70, 50});
  CHECK_BOX(ask(GL_SCISSOR_BOX), {0, 0, 70, 50});
  discard(made);
  destroy_window(other);
}

void empty_child() {
  gl_window child = make_window(window.hwnd, 10, 10, 0, 0, true);
  HGLRC made = driver.wglCreateContext(child.hdc);
  CHECK(driver.wglMakeCurrent(child.hdc, made));
  driver.glViewportOffsetZ4(0, 0);
  driver.glDrawableSizeZ4(width, height);
  CHECK_BOX(ask(GL_VIEWPORT), {0, 0, width, height});
  driver.glClear(GL_COLOR_BUFFER_BIT);
  CHECK(driver.wglSwapBuffers(child.hdc));
  discard(made);
  destroy_window(child);
}

void spare_shows_nothing() {
  HGLRC made = fresh();
  driver.glScissor(5, 6, 7, 8);
  const GLenum names[] = {GL_VIEWPORT,     GL_SCISSOR_BOX, GL_RED_BITS,          GL_DEPTH_BITS, GL_STENCIL_BITS,
                          GL_DOUBLEBUFFER, GL_DRAW_BUFFER, GL_READ_BUFFER,       GL_SAMPLES,    GL_SAMPLE_BUFFERS,
                          GL_STEREO,       GL_AUX_BUFFERS, GL_MAX_VIEWPORT_DIMS, GL_ALPHA_BITS, GL_ACCUM_RED_BITS};
  constexpr int count = sizeof names / sizeof *names;
  box before[count];
  for (int i = 0; i < count; ++i) before[i] = ask(names[i]);
  const HDC hdc = driver.wglGetCurrentDC();
  driver.glDrawableSizeZ4(-1, -1);
  for (int i = 0; i < count; ++i)
    CHECK_BOX(ask(names[i]), {before[i].x, before[i].y, before[i].width, before[i].height});
  CHECK(driver.wglGetCurrentDC() == hdc);
  CHECK(driver.wglGetCurrentContext() == made);

  // Nothing reaches the window's pixels.
  driver.glDisable(GL_SCISSOR_TEST);
  driver.glClearColor(1, 0, 0, 1);
  driver.glClear(GL_COLOR_BUFFER_BIT);
  CHECK(driver.wglSwapBuffers(window.hdc));
  driver.glDrawableSizeZ4(width, height);
  driver.glClearColor(0, 0, 1, 1);
  driver.glClear(GL_COLOR_BUFFER_BIT);
  u32 found = 0;
  driver.glReadPixels(50, 50, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, &found);
  CHECK_EQUAL(found & 0xffffff, 0xff0000);
  driver.glDrawableSizeZ4(-1, -1);
  driver.glClearColor(0, 1, 0, 1);
  driver.glClear(GL_COLOR_BUFFER_BIT);
  driver.glDrawableSizeZ4(width, height);
  driver.glReadPixels(50, 50, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, &found);
  CHECK_EQUAL(found & 0xffffff, 0xff0000);
  CHECK_BOX(ask(GL_SCISSOR_BOX), {5, 6, 7, 8});
  discard(made);
}

// Sparing ends with the binding.
void spare_ends() {
  HGLRC made = fresh();
  driver.glDrawableSizeZ4(-1, -1);
  driver.glClear(GL_COLOR_BUFFER_BIT);
  CHECK(driver.wglMakeCurrent(nullptr, nullptr));
  CHECK(driver.wglMakeCurrent(window.hdc, made));
  driver.glClearColor(0, 1, 1, 1);
  driver.glClear(GL_COLOR_BUFFER_BIT);
  u32 found = 0;
  driver.glReadPixels(50, 50, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, &found);
  CHECK_EQUAL(found & 0xffffff, 0xffff00);
  discard(made);
}

// How many samples of a square of 40 by 30 pixels pass, at a depth between 0, near, and 1.
template <class Begin>
GLuint count_samples(Begin begin, GLenum target, double depth = 0.25) {
  GLuint query = 0, samples = 77;
  driver.glGenQueries(1, &query);
  begin(target, query);
  driver.glBegin(GL_QUADS);
  for (const auto& [x, y] : {corner{0, 0}, corner{40, 0}, corner{40, 30}, corner{0, 30}})
    driver.glVertex3d(x * 2.0 / width - 1, y * 2.0 / height - 1, depth * 2 - 1);
  driver.glEnd();
  driver.glEndQuery(target);
  driver.glGetQueryObjectuiv(query, GL_QUERY_RESULT, &samples);
  driver.glDeleteQueries(1, &query);
  return samples;
}

// A program draws what a query has found to be seen: whoever counts for it has to have all pixels.
void spare_counts_samples() {
  const auto begin_arb = [](GLenum target, GLuint query) { driver.glBeginQueryARB(target, query); };
  const auto begin = [](GLenum target, GLuint query) { driver.glBeginQuery(target, query); };
  for (const bool older : {false, true}) {
    HGLRC made = fresh();
    driver.glDrawableSizeZ4(-1, -1);
    driver.glEnable(GL_DEPTH_TEST);
    driver.glEnable(GL_SCISSOR_TEST);
    driver.glScissor(0, 0, 20, 90);
    driver.glDepthMask(GL_FALSE);
    driver.glClear(GL_DEPTH_BUFFER_BIT);
    CHECK_EQUAL(older ? count_samples(begin_arb, GL_SAMPLES_PASSED) : count_samples(begin, GL_SAMPLES_PASSED), 600);
    driver.glDisable(GL_SCISSOR_TEST);
    CHECK_EQUAL(count_samples(begin, GL_SAMPLES_PASSED), 1200);
    CHECK_EQUAL(count_samples(begin, GL_ANY_SAMPLES_PASSED), 1);
    driver.glClearDepth(0.1);
    driver.glDepthMask(GL_TRUE);
    driver.glClear(GL_DEPTH_BUFFER_BIT);
    CHECK_EQUAL(count_samples(begin, GL_SAMPLES_PASSED), 0);
    CHECK_EQUAL(count_samples(begin, GL_SAMPLES_PASSED, 0.05), 1200);
    discard(made);
  }
}

// Also after it was spared again, as after each binding and each change of the window's size.
void spare_goes_on_counting() {
  const auto begin = [](GLenum target, GLuint query) { driver.glBeginQuery(target, query); };
  HGLRC made = fresh();
  driver.glDrawableSizeZ4(-1, -1);
  CHECK_EQUAL(count_samples(begin, GL_SAMPLES_PASSED), 1200);
  driver.glDrawableSizeZ4(-1, -1);
  CHECK_EQUAL(count_samples(begin, GL_SAMPLES_PASSED), 1200);
  CHECK(driver.wglMakeCurrent(nullptr, nullptr));
  CHECK(driver.wglMakeCurrent(window.hdc, made));
  driver.glDrawableSizeZ4(-1, -1);
  CHECK_EQUAL(count_samples(begin, GL_SAMPLES_PASSED), 1200);
  CHECK(driver.wglSwapBuffers(window.hdc));
  CHECK_EQUAL(count_samples(begin, GL_SAMPLES_PASSED), 1200);
  discard(made);
}

// What is counted of a context that draws to a framebuffer object was right before, and that object is not touched.
void spare_leaves_framebuffer_alone() {
  HGLRC made = fresh();
  GLuint framebuffer = 0, depths = 0, query = 0;
  driver.glDrawableSizeZ4(-1, -1);
  driver.glGenFramebuffers(1, &framebuffer);
  driver.glGenRenderbuffers(1, &depths);
  driver.glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
  driver.glBindRenderbuffer(GL_RENDERBUFFER, depths);
  driver.glRenderbufferStorage(GL_RENDERBUFFER, GL_DEPTH_COMPONENT24, 16, 16);
  driver.glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_DEPTH_ATTACHMENT, GL_RENDERBUFFER, depths);
  driver.glDrawBuffer(GL_NONE);
  driver.glReadBuffer(GL_NONE);
  CHECK_EQUAL(driver.glCheckFramebufferStatus(GL_FRAMEBUFFER), GL_FRAMEBUFFER_COMPLETE);
  driver.glClearDepth(0.25);
  driver.glClear(GL_DEPTH_BUFFER_BIT);
  driver.glClearDepth(0.75);
  driver.glGenQueries(1, &query);
  driver.glBeginQuery(GL_SAMPLES_PASSED, query);
  driver.glEndQuery(GL_SAMPLES_PASSED);
  GLfloat depth = 0;
  driver.glReadPixels(3, 3, 1, 1, GL_DEPTH_COMPONENT, GL_FLOAT, &depth);
  CHECK(depth > 0.24f && depth < 0.26f);
  driver.glDeleteQueries(1, &query);
  driver.glDeleteFramebuffers(1, &framebuffer);
  driver.glDeleteRenderbuffers(1, &depths);
  discard(made);
}

// A window has one interval, whichever context is asked, and another window its own.
void spare_has_the_windows_interval() {
  HGLRC made = fresh();
  bind_extensions();
  const gl_window other = make_window(nullptr, 0, 0, 40, 40, false);
  const auto spare_on = [](HDC hdc, HGLRC hglrc) {
    CHECK(driver.wglMakeCurrent(hdc, hglrc));
    driver.glDrawableSizeZ4(-1, -1);
  };
  HGLRC second = driver.wglCreateContext(window.hdc);
  spare_on(other.hdc, made);
  CHECK_EQUAL(driver.wglGetSwapIntervalEXT(), 1);
  spare_on(window.hdc, made);
  CHECK(driver.wglSwapIntervalEXT(0));
  CHECK_EQUAL(driver.wglGetSwapIntervalEXT(), 0);
  spare_on(window.hdc, second);
  CHECK_EQUAL(driver.wglGetSwapIntervalEXT(), 0);
  CHECK(!driver.wglSwapIntervalEXT(-7));
  CHECK_EQUAL(driver.wglGetSwapIntervalEXT(), 0);
  spare_on(other.hdc, made);
  CHECK_EQUAL(driver.wglGetSwapIntervalEXT(), 1);
  CHECK(driver.wglSwapIntervalEXT(3));
  CHECK_EQUAL(driver.wglGetSwapIntervalEXT(), 3);
  spare_on(window.hdc, made);
  CHECK_EQUAL(driver.wglGetSwapIntervalEXT(), 0);
  CHECK(driver.wglSwapIntervalEXT(1));
  CHECK(driver.wglDeleteContext(second));
  discard(made);
  destroy_window(other);
}

void spare_of_a_window_that_is_gone() {
  HGLRC made = driver.wglCreateContext(window.hdc);
  const gl_window other = make_window(nullptr, 0, 0, 40, 40, false);
  CHECK(driver.wglMakeCurrent(other.hdc, made));
  driver.glDrawableSizeZ4(-1, -1);
  CHECK(driver.wglSwapBuffers(other.hdc));
  DestroyWindow(other.hwnd);
  SetLastError(0);
  CHECK(!driver.wglSwapBuffers(other.hdc));
  CHECK_EQUAL(GetLastError(), ERROR_INVALID_HANDLE);
  CHECK(driver.wglMakeCurrent(window.hdc, made));
  discard(made);
}

// Drawing and waiting costs a context that is never seen as little as before.
void spare_stays_with_other_queries() {
  HGLRC made = fresh();
  driver.glClearColor(0, 0, 1, 1);
  driver.glClear(GL_COLOR_BUFFER_BIT);
  driver.glDrawableSizeZ4(-1, -1);
  GLuint query = 0;
  driver.glGenQueries(1, &query);
  driver.glBeginQuery(GL_PRIMITIVES_GENERATED, query);
  driver.glEndQuery(GL_PRIMITIVES_GENERATED);
  driver.glClearColor(0, 1, 0, 1);
  driver.glClear(GL_COLOR_BUFFER_BIT);
  driver.glDrawableSizeZ4(width, height);
  u32 found = 0;
  driver.glReadPixels(50, 50, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, &found);
  CHECK_EQUAL(found & 0xffffff, 0xff0000);
  driver.glDeleteQueries(1, &query);
  discard(made);
}

const test_case cases[] = {
    {"first", make_first},
    {"query-types", query_types},
    {"failed-query", failed_query},
    {"share-at-once", share_at_once},
    {"scissor-is-the-programs", scissor_is_the_programs},
    {"scissor-in-lists", scissor_in_lists},
    {"raster-position-stays", raster_position_stays},
    {"popped-after-move", popped_after_move},
    {"popped-after-first-share", popped_after_first_share},
    {"attribute-overflow", attribute_overflow},
    {"share-while-compiling", share_while_compiling},
    {"share-while-feeding-back", share_while_feeding_back},
    {"incomplete-framebuffer", incomplete_framebuffer},
    {"initial-boxes", initial_boxes},
    {"compiled-viewport", compiled_viewport},
    {"second-window", second_window},
    {"empty-child", empty_child},
    {"spare-shows-nothing", spare_shows_nothing},
    {"spare-ends", spare_ends},
    {"spare-counts-samples", spare_counts_samples},
    {"spare-goes-on-counting", spare_goes_on_counting},
    {"spare-leaves-framebuffer-alone", spare_leaves_framebuffer_alone},
    {"spare-has-the-windows-interval", spare_has_the_windows_interval},
    {"spare-of-a-window-that-is-gone", spare_of_a_window_that_is_gone},
    {"spare-stays-with-other-queries", spare_stays_with_other_queries},
};

}  // namespace

int main(int argc, char** argv) {
  load_driver();
  return run_cases(cases, sizeof cases / sizeof *cases, argc, argv, 60);
}
