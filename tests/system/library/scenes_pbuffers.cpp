// Pbuffers: each part has one of the application's size, so that all that is read from one is exact.
#include <cmath>

#include "painting.h"
#include "threads.h"
// The last, for it needs windows.h.
#include <GL/wglext.h>

namespace {

constexpr place over_all = {480, 231, 641, 423};  // over 800,450
constexpr int width = 301, height = 203;

struct pbuffer_entries {
  PFNWGLCHOOSEPIXELFORMATARBPROC choose_format;
  PFNWGLCREATEPBUFFERARBPROC create;
  PFNWGLDESTROYPBUFFERARBPROC destroy;
  PFNWGLGETPBUFFERDCARBPROC get_dc;
  PFNWGLRELEASEPBUFFERDCARBPROC release_dc;
  PFNWGLQUERYPBUFFERARBPROC query;
  PFNWGLBINDTEXIMAGEARBPROC bind_image;
  PFNWGLRELEASETEXIMAGEARBPROC release_image;
  PFNWGLSETPBUFFERATTRIBARBPROC set_attributes;
};

template <class Entry>
void find(const char* name, Entry* entry) {
  *entry = reinterpret_cast<Entry>(reinterpret_cast<void*>(wglGetProcAddress(name)));
  if (!*entry) fail(__FILE__, __LINE__, name, " is not there");
}

// With a context current.
pbuffer_entries find_entries() {
  pbuffer_entries found;
  find("wglChoosePixelFormatARB", &found.choose_format);
  find("wglCreatePbufferARB", &found.create);
  find("wglDestroyPbufferARB", &found.destroy);
  find("wglGetPbufferDCARB", &found.get_dc);
  find("wglReleasePbufferDCARB", &found.release_dc);
  find("wglQueryPbufferARB", &found.query);
  find("wglBindTexImageARB", &found.bind_image);
  find("wglReleaseTexImageARB", &found.release_image);
  find("wglSetPbufferAttribARB", &found.set_attributes);
  return found;
}

// One for windows too, on which the library makes the parts' pbuffers. Of 24 bits: those of 32 have another depth in
// Xvfb than Mesa puts into them, and the X server ends a program that does.
int find_format(const pbuffer_entries& wgl, HDC hdc) {
  const int wanted[] = {WGL_DRAW_TO_PBUFFER_ARB,
                        1,
                        WGL_DRAW_TO_WINDOW_ARB,
                        1,
                        WGL_SUPPORT_OPENGL_ARB,
                        1,
                        WGL_DOUBLE_BUFFER_ARB,
                        1,
                        WGL_BIND_TO_TEXTURE_RGB_ARB,
                        1,
                        WGL_PIXEL_TYPE_ARB,
                        WGL_TYPE_RGBA_ARB,
                        WGL_DEPTH_BITS_ARB,
                        24,
                        WGL_STENCIL_BITS_ARB,
                        8,
                        0};
  int formats[200] = {};
  UINT count = 0;
  CHECK(wgl.choose_format(hdc, wanted, nullptr, 200, formats, &count));
  for (UINT i = 0; i < count; ++i) {
    PIXELFORMATDESCRIPTOR format = {};
    DescribePixelFormat(hdc, formats[i], sizeof format, &format);
    if (format.cColorBits == 24 && format.cDepthBits == 24) return formats[i];
  }
  fail(__FILE__, __LINE__, "no pixel format", " for pbuffers");
  return 0;
}

struct pbuffer {
  HPBUFFERARB handle;
  HDC hdc;
  HGLRC context;
};

pbuffer make_pbuffer(const pbuffer_entries& wgl, HDC hdc, int format, const int* attributes = nullptr) {
  pbuffer made = {wgl.create(hdc, format, width, height, attributes), nullptr, nullptr};
  CHECK(made.handle != nullptr);
  made.hdc = wgl.get_dc(made.handle);
  CHECK(made.hdc != nullptr);
  made.context = wglCreateContext(made.hdc);
  CHECK(made.context != nullptr);
  return made;
}

void make_current(const pbuffer& drawn) {
  CHECK(wglMakeCurrent(drawn.hdc, drawn.context));
}

// It is current on no thread.
void destroy_pbuffer(const pbuffer_entries& wgl, const pbuffer& gone) {
  CHECK(wglDeleteContext(gone.context));
  CHECK(wgl.release_dc(gone.handle, gone.hdc));
  CHECK(wgl.destroy(gone.handle));
}

void draw_scene(int shift) {
  glViewport(0, 0, width, height);
  glMatrixMode(GL_PROJECTION);
  glLoadIdentity();
  glOrtho(0, width, 0, height, -1, 1);
  glMatrixMode(GL_MODELVIEW);
  glLoadIdentity();
  glClearColor(0.2f, 0.1f, 0.3f, 1);
  glClearStencil(3);
  glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT | GL_STENCIL_BUFFER_BIT);
  glEnable(GL_DEPTH_TEST);
  glEnable(GL_STENCIL_TEST);
  glStencilOp(GL_KEEP, GL_INCR, GL_INCR);
  for (int i = 0; i < 40; ++i) {
    glColor3ub(static_cast<GLubyte>(6 * i + shift), static_cast<GLubyte>(250 - 5 * i), static_cast<GLubyte>(3 * i));
    glBegin(GL_TRIANGLES);
    glVertex3f(7.3f * static_cast<float>(i), 11.6f, 0.9f - 0.04f * static_cast<float>(i));
    glVertex3f(299.2f - 3.1f * static_cast<float>(i), 30.3f + 4.2f * static_cast<float>(i), 0.3f);
    glVertex3f(13.4f, 190.7f - 2.3f * static_cast<float>(i), -0.8f + 0.02f * static_cast<float>(i));
    glEnd();
  }
  glDisable(GL_DEPTH_TEST);
  glDisable(GL_STENCIL_TEST);
}

std::vector<GLubyte> read_colors() {
  std::vector<GLubyte> pixels(width * height * 4);
  glReadPixels(0, 0, width, height, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
  return pixels;
}

void note_colors(const char* name) {
  const std::vector<GLubyte> pixels = read_colors();
  note_bytes(name, pixels.data(), pixels.size());
}

void note_pbuffer(const char* name) {
  note_colors(name);
  std::vector<GLfloat> depths(width * height);
  glReadPixels(0, 0, width, height, GL_DEPTH_COMPONENT, GL_FLOAT, depths.data());
  note_bytes("depth", depths.data(), depths.size() * sizeof(GLfloat));
  std::vector<GLubyte> stencils(304 * height);
  glReadPixels(0, 0, width, height, GL_STENCIL_INDEX, GL_UNSIGNED_BYTE, stencils.data());
  note_bytes("stencil", stencils.data(), stencils.size());
  note_error(name);
}

void note_box(const char* name, GLenum which) {
  GLint box[4] = {};
  glGetIntegerv(which, box);
  note("%s %d %d %d %d", name, box[0], box[1], box[2], box[3]);
}

// With the window's context current: what was read from a pbuffer, twice, over the seams.
void show_image(const gl_window& window, const std::vector<GLubyte>& pixels, const char* step) {
  paint(window.hwnd, 4);
  glPixelZoom(1, 1);
  for (const int left : {20, 310}) {
    glRasterPos2i(left, left / 2 + 12);
    glDrawPixels(width, height, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
  }
  show(window, step);
}

void pbuffer_drawn() {
  begin_scene(__func__);
  const gl_window window = make_window(over_all);
  const pbuffer_entries wgl = find_entries();
  paint_and_show(window, 1, "before");
  const pbuffer drawn = make_pbuffer(wgl, window.hdc, find_format(wgl, window.hdc));
  make_current(drawn);
  note_box("viewport", GL_VIEWPORT);
  GLint size[2] = {};
  CHECK(wgl.query(drawn.handle, WGL_PBUFFER_WIDTH_ARB, &size[0]));
  CHECK(wgl.query(drawn.handle, WGL_PBUFFER_HEIGHT_ARB, &size[1]));
  note("%d x %d", size[0], size[1]);
  draw_scene(0);
  note_pbuffer("first");
  std::vector<GLubyte> pixels = read_colors();
  make_current(window);
  show_image(window, pixels, "first");
  make_current(drawn);
  note_pbuffer("kept");
  draw_scene(99);
  glFlush();
  move_window(window.hwnd, {over_all.left - 50, over_all.top + 60, over_all.width, over_all.height});
  pixels = read_colors();
  note_pbuffer("second");
  make_current(window);
  show_image(window, pixels, "second, window moved");
  destroy_pbuffer(wgl, drawn);
  paint_and_show(window, 2, "after");
  destroy_window(window);
}

// A window of the pbuffers' format, whose context may draw to either.
gl_window make_window_like_pbuffers() {
  const gl_window any = make_window({100, 100, 40, 30});
  const pbuffer_entries wgl = find_entries();
  const int format = find_format(wgl, any.hdc);
  gl_window window = make_formless_window(over_all);
  const PIXELFORMATDESCRIPTOR unused = {};
  CHECK(SetPixelFormat(window.hdc, format, &unused));
  window.context = wglCreateContext(window.hdc);
  destroy_window(any);
  make_current(window);
  return window;
}

// Where a part lies in the window is nothing to a pbuffer.
void one_context_for_window_and_pbuffer() {
  begin_scene(__func__);
  const gl_window window = make_window_like_pbuffers();
  const pbuffer_entries wgl = find_entries();
  paint_and_show(window, 1, "before");
  const pbuffer made = make_pbuffer(wgl, window.hdc, GetPixelFormat(window.hdc));
  CHECK(wglMakeCurrent(made.hdc, window.context));
  note_box("viewport", GL_VIEWPORT);
  note_box("scissor", GL_SCISSOR_BOX);
  draw_scene(20);
  note_pbuffer("by the window's context");
  const std::vector<GLubyte> pixels = read_colors();
  make_current(window);
  note_box("viewport", GL_VIEWPORT);
  show_image(window, pixels, "drawn");
  CHECK(wglMakeCurrent(made.hdc, made.context));
  note_pbuffer("by its own context");
  make_current(window);
  paint_and_show(window, 2, "after");
  destroy_pbuffer(wgl, made);
  destroy_window(window);
}

constexpr GLuint texture = 5;

void begin_texture(GLenum target) {
  glBindTexture(target, texture);
  glTexParameteri(target, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
  glTexParameteri(target, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
}

void note_texture(GLenum target, size_t texels, const char* name) {
  std::vector<GLubyte> bytes(texels * 4);
  glGetTexImage(target, 0, GL_RGBA, GL_UNSIGNED_BYTE, bytes.data());
  note_bytes(name, bytes.data(), bytes.size());
  note_error(name);
}

void copy_in_one_dimension() {
  begin_texture(GL_TEXTURE_1D);
  glCopyTexImage1D(GL_TEXTURE_1D, 0, GL_RGBA8, 11, 60, 256, 0);
  note_texture(GL_TEXTURE_1D, 256, "image 1D");
  glCopyTexSubImage1D(GL_TEXTURE_1D, 0, 37, 90, 101, 150);
  note_texture(GL_TEXTURE_1D, 256, "part 1D");
  glDeleteTextures(1, &texture);
}

void copy_in_three_dimensions() {
  const gl_extensions gl = find_extensions();
  PFNGLCOPYTEXSUBIMAGE3DPROC copy;
  find("glCopyTexSubImage3D", &copy);
  begin_texture(GL_TEXTURE_3D);
  const std::vector<GLubyte> empty(64 * 64 * 4 * 4);
  gl.glTexImage3D(GL_TEXTURE_3D, 0, GL_RGBA8, 64, 64, 4, 0, GL_RGBA, GL_UNSIGNED_BYTE, empty.data());
  copy(GL_TEXTURE_3D, 0, 3, 5, 2, 100, 70, 55, 51);
  note_texture(GL_TEXTURE_3D, 64 * 64 * 4, "part 3D");
  glDeleteTextures(1, &texture);
}

void copy_in_two_dimensions() {
  begin_texture(GL_TEXTURE_2D);
  glCopyTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, 9, 20, 128, 128, 0);
  note_texture(GL_TEXTURE_2D, 128 * 128, "image 2D");
  glCopyTexSubImage2D(GL_TEXTURE_2D, 0, 30, 40, 170, 31, 90, 77);
  note_texture(GL_TEXTURE_2D, 128 * 128, "part 2D");
}

// The lower left of the texture's `share` of its width and height, over the window's pixels given.
void draw_textured(int left, int bottom, int right, int top, float share = 1) {
  glColor3f(1, 1, 1);
  glEnable(GL_TEXTURE_2D);
  glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_REPLACE);
  glBegin(GL_QUADS);
  for (int i = 0; i < 4; ++i) {
    const bool at_right = i == 1 || i == 2, upper = i > 1;
    glTexCoord2f(at_right ? share : 0, upper ? share : 0);
    glVertex2i(at_right ? right : left, upper ? top : bottom);
  }
  glEnd();
  glDisable(GL_TEXTURE_2D);
}

std::vector<GLfloat> read_depths(int left, int bottom, int columns, int rows) {
  std::vector<GLfloat> depths(static_cast<size_t>(columns) * rows);
  glReadPixels(left, bottom, columns, rows, GL_DEPTH_COMPONENT, GL_FLOAT, depths.data());
  return depths;
}

// A depth goes through more roundings when it is copied by way of memory.
void copy_depths() {
  constexpr int columns = 60, rows = 50;
  constexpr GLfloat rounding = 4.0f / (1 << 24);
  const std::vector<GLfloat> from = read_depths(100, 80, columns, rows);
  glEnable(GL_DEPTH_TEST);
  glDepthFunc(GL_ALWAYS);
  glRasterPos2i(20, 30);
  glCopyPixels(100, 80, columns, rows, GL_DEPTH);
  glDisable(GL_DEPTH_TEST);
  const std::vector<GLfloat> to = read_depths(20, 30, columns, rows);
  int shades = 0;
  for (size_t i = 0; i < from.size(); ++i) {
    shades += i > 0 && std::abs(from[i] - from[i - 1]) > rounding;
    CHECK(std::abs(from[i] - to[i]) <= rounding);
  }
  CHECK(shades > 1000);
  note_colors("after a copy of depths");
}

// All six copies from a pbuffer, whose textures the window's context shares.
void pbuffer_copied() {
  begin_scene(__func__);
  const gl_window window = make_window(over_all);
  const pbuffer_entries wgl = find_entries();
  const pbuffer drawn = make_pbuffer(wgl, window.hdc, find_format(wgl, window.hdc));
  CHECK(wglShareLists(window.context, drawn.context));
  make_current(drawn);
  draw_scene(40);
  copy_in_one_dimension();
  copy_in_three_dimensions();
  copy_in_two_dimensions();
  glRasterPos2i(120, 90);
  glCopyPixels(15, 12, 140, 100, GL_COLOR);
  note_colors("pixels");
  copy_depths();
  draw_textured(7, 9, 7 + 128, 9 + 128);
  note_colors("textured");
  make_current(window);
  paint(window.hwnd, 3);
  glBindTexture(GL_TEXTURE_2D, texture);
  draw_textured(256, 140, 256 + 128, 140 + 128);
  show(window, "shared texture");
  destroy_pbuffer(wgl, drawn);
  paint(window.hwnd, 5);
  draw_textured(200, 100, 200 + 256, 100 + 256);
  show(window, "texture alone");
  destroy_window(window);
}

void pbuffer_as_texture() {
  begin_scene(__func__);
  const gl_window window = make_window(over_all);
  const pbuffer_entries wgl = find_entries();
  const int attributes[] = {WGL_TEXTURE_FORMAT_ARB, WGL_TEXTURE_RGB_ARB, WGL_TEXTURE_TARGET_ARB, WGL_TEXTURE_2D_ARB, 0};
  const int format = find_format(wgl, window.hdc);
  const pbuffer drawn = make_pbuffer(wgl, window.hdc, format, attributes);
  const int level[] = {WGL_MIPMAP_LEVEL_ARB, 0, 0};
  for (const int round : {1, 2}) {
    make_current(drawn);
    draw_scene(70 * round);
    note_colors("drawn");
    CHECK(wgl.set_attributes(drawn.handle, level));
    make_current(window);
    paint(window.hwnd, round);
    begin_texture(GL_TEXTURE_2D);
    CHECK(wgl.bind_image(drawn.handle, WGL_BACK_LEFT_ARB));
    draw_textured(180, 110, 180 + width, 110 + height);
    const std::string step = "bound, round " + std::to_string(round);
    show(window, step.c_str());
    CHECK(wgl.release_image(drawn.handle, WGL_BACK_LEFT_ARB));
  }
  destroy_pbuffer(wgl, drawn);
  destroy_window(window);
}

DWORD draw_on_thread(void* argument) {
  const auto* drawn = static_cast<const pbuffer*>(argument);
  make_current(*drawn);
  draw_scene(55);
  begin_texture(GL_TEXTURE_2D);
  glCopyTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, 20, 30, 128, 128, 0);
  note_texture(GL_TEXTURE_2D, 128 * 128, "image on the thread");
  CHECK(wglMakeCurrent(nullptr, nullptr));
  return 0;
}

// Another thread than the window's fills a texture by way of a pbuffer.
void pbuffer_on_a_thread() {
  begin_scene(__func__);
  const gl_window window = make_window(over_all);
  const pbuffer_entries wgl = find_entries();
  pbuffer drawn = make_pbuffer(wgl, window.hdc, find_format(wgl, window.hdc));
  CHECK(wglShareLists(window.context, drawn.context));
  paint_and_show(window, 1, "before");
  join_thread(start_thread(draw_on_thread, &drawn));
  paint(window.hwnd, 2);
  glBindTexture(GL_TEXTURE_2D, texture);
  draw_textured(256, 140, 256 + 128, 140 + 128);
  show(window, "with the thread's texture");
  make_current(drawn);
  note_pbuffer("taken over");
  make_current(window);
  destroy_pbuffer(wgl, drawn);
  destroy_window(window);
}

// So many have a record in the library; the others have no device context when spanned.
constexpr size_t records = 64;

void note_small(const pbuffer_entries& wgl, HPBUFFERARB handle, HGLRC context, int shade) {
  const HDC hdc = wgl.get_dc(handle);
  CHECK(wglMakeCurrent(hdc, context));
  glClearColor(static_cast<float>(shade) / 80, 0.5f, 0.1f, 1);
  glClear(GL_COLOR_BUFFER_BIT);
  GLubyte pixels[8 * 6 * 4] = {};
  glReadPixels(0, 0, 8, 6, GL_RGBA, GL_UNSIGNED_BYTE, pixels);
  const std::string name = "pbuffer " + std::to_string(shade);
  note_bytes(name.c_str(), pixels, sizeof pixels);
  CHECK(wgl.release_dc(handle, hdc));
}

void many_pbuffers() {
  begin_scene(__func__);
  constexpr size_t count = 70;
  const gl_window window = make_window(over_all);
  const pbuffer_entries wgl = find_entries();
  const int format = find_format(wgl, window.hdc);
  paint_and_show(window, 1, "before");
  std::vector<HPBUFFERARB> all;
  while (all.size() < count) all.push_back(wgl.create(window.hdc, format, 8, 6, nullptr));
  for (const HPBUFFERARB each : all) CHECK(each != nullptr);
  const HDC hdc = wgl.get_dc(all[0]);
  const HGLRC context = wglCreateContext(hdc);
  for (const size_t i : {size_t{0}, size_t{1}, records - 1}) note_small(wgl, all[i], context, static_cast<int>(i));
  for (const size_t i : {records, count - 1}) {
    const HDC beyond = wgl.get_dc(all[i]);
    CHECK_EQUAL(beyond != nullptr, expected_parts() == 0);
    if (beyond) wgl.release_dc(all[i], beyond);
  }
  make_current(window);
  paint_and_show(window, 2, "with many");
  for (const size_t i : {size_t{7}, records, count - 1}) {
    CHECK(wgl.destroy(all[i]));
    all[i] = nullptr;
  }
  // Its place can be taken again.
  all[7] = wgl.create(window.hdc, format, 8, 6, nullptr);
  note_small(wgl, all[7], context, 7);
  make_current(window);
  for (const HPBUFFERARB each : all) {
    if (each) CHECK(wgl.destroy(each));
  }
  CHECK(wglDeleteContext(context));
  paint_and_show(window, 3, "after");
  destroy_window(window);
}

// Destroyed, it lives on for the one who has it current, or is gone: nothing that is drawn then may harm the window.
void pbuffer_destroyed_while_current() {
  begin_scene(__func__);
  const gl_window window = make_window(over_all);
  const pbuffer_entries wgl = find_entries();
  const int format = find_format(wgl, window.hdc);
  for (const int round : {1, 2}) {
    const pbuffer drawn = make_pbuffer(wgl, window.hdc, format);
    make_current(drawn);
    draw_scene(10 * round);
    note_colors("before");
    CHECK(wgl.release_dc(drawn.handle, drawn.hdc));
    CHECK(wgl.destroy(drawn.handle));
    draw_scene(33);
    glFinish();
    read_colors();
    make_current(window);
    const std::string step = "round " + std::to_string(round);
    paint_and_show(window, round, step.c_str());
    CHECK(wglDeleteContext(drawn.context));
  }
  destroy_window(window);
}

}  // namespace

const scene_group pbuffer_scenes = {"pbuffers",
                                    {{"pbuffer_drawn", pbuffer_drawn},
                                     {"one_context_for_window_and_pbuffer", one_context_for_window_and_pbuffer},
                                     {"pbuffer_copied", pbuffer_copied},
                                     {"pbuffer_as_texture", pbuffer_as_texture},
                                     {"pbuffer_on_a_thread", pbuffer_on_a_thread},
                                     {"many_pbuffers", many_pbuffers},
                                     {"pbuffer_destroyed_while_current", pbuffer_destroyed_while_current}}};
