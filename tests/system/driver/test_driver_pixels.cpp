// The same scene in one window of 200 by 150, and in four contexts on child windows that show a part of it each,
// compared pixel by pixel: nothing that a program draws or asks for may tell them apart.
#include <cstring>

#include "driver.h"

namespace {

constexpr int width = 200, height = 150;

struct picture {
  u32 pixels[width * height];
};

// A part of the picture, in window coordinates of GL.
struct part {
  int left, bottom, width, height;
  gl_window window;
  HGLRC context;
};

// Cut off the middle, so that no part begins at a round number, and one part has an offset of none.
constexpr int cut_x = 87, cut_y = 61;

gl_window whole_window, parts_window;
HGLRC whole_context;
part parts[4] = {{0, 0, cut_x, cut_y, {}, nullptr},
                 {cut_x, 0, width - cut_x, cut_y, {}, nullptr},
                 {0, cut_y, cut_x, height - cut_y, {}, nullptr},
                 {cut_x, cut_y, width - cut_x, height - cut_y, {}, nullptr}};
picture whole, spanned;
const part* drawn_part;  // null: the whole window is

void make_windows() {
  whole_window = make_window(nullptr, 50, 50, width, height, true);
  whole_context = driver.wglCreateContext(whole_window.hdc);
  CHECK(driver.wglMakeCurrent(whole_window.hdc, whole_context));
  bind_extensions();
  parts_window = make_window(nullptr, 300, 50, width, height, true);
  for (part& p : parts) {
    p.window = make_window(parts_window.hwnd, p.left, height - p.bottom - p.height, p.width, p.height, true);
    p.context = driver.wglCreateContext(p.window.hdc);
  }
}

void begin(const part& p) {
  CHECK(driver.wglMakeCurrent(p.window.hdc, p.context));
  driver.glViewport(0, 0, width, height);
  driver.glViewportOffsetZ4(-p.left, -p.bottom);
  driver.glDrawableSizeZ4(width, height);
}

void read(int x, int y, int w, int h, u32* first) {
  driver.glPixelStorei(GL_PACK_ROW_LENGTH, width);
  driver.glReadPixels(x, y, w, h, GL_RGBA, GL_UNSIGNED_BYTE, first);
  driver.glPixelStorei(GL_PACK_ROW_LENGTH, 0);
}

int differing() {
  int count = 0;
  for (int i = 0; i < width * height; ++i) count += whole.pixels[i] != spanned.pixels[i];
  return count;
}

int not_black(const picture& p) {
  int count = 0;
  for (u32 pixel : p.pixels) count += (pixel & 0xffffff) != 0;
  return count;
}

void clear() {
  driver.glDisable(GL_SCISSOR_TEST);
  driver.glClearColor(0, 0, 0, 1);
  driver.glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
  driver.glMatrixMode(GL_PROJECTION);
  driver.glLoadIdentity();
}

// Draws in both ways and counts the pixels that differ. What is drawn must show something.
int compare(void (*draw)()) {
  memset(&whole, 0x11, sizeof whole);
  memset(&spanned, 0x22, sizeof spanned);
  CHECK(driver.wglMakeCurrent(whole_window.hdc, whole_context));
  driver.glViewport(0, 0, width, height);
  clear();
  drawn_part = nullptr;
  draw();
  read(0, 0, width, height, whole.pixels);
  CHECK_EQUAL(driver.glGetError(), GL_NO_ERROR);
  for (const part& p : parts) {
    begin(p);
    clear();
    drawn_part = &p;
    draw();
    read(0, 0, p.width, p.height, spanned.pixels + p.bottom * width + p.left);
    CHECK_EQUAL(driver.glGetError(), GL_NO_ERROR);
  }
  CHECK(not_black(whole) > 500);
  return differing();
}

void rectangle(GLfloat left, GLfloat bottom, GLfloat right, GLfloat top, GLubyte red, GLubyte green, GLubyte blue) {
  driver.glColor3ub(red, green, blue);
  driver.glRectf(left, bottom, right, top);
}

void triangles_and_lines() {
  unsigned seed = 7;
  const auto random = [&seed] {
    return static_cast<GLfloat>((seed = seed * 1664525 + 1013904223) >> 8) / 0xffffff * 2 - 1;
  };
  driver.glBegin(GL_TRIANGLES);
  for (int i = 0; i < 900; ++i) {
    driver.glColor3f(random(), random(), random());
    driver.glVertex2f(random(), random());
  }
  driver.glEnd();
  driver.glBegin(GL_LINES);
  for (int i = 0; i < 100; ++i) {
    driver.glColor3f(1, random(), random());
    driver.glVertex2f(random(), random());
  }
  driver.glEnd();
}

void viewport_cases() {
  CHECK_EQUAL(compare(triangles_and_lines), 0);
  CHECK_EQUAL(compare([] {
                driver.glViewport(31, 22, 120, 90);
                rectangle(-1, -1, 1, 1, 255, 80, 0);
                driver.glViewport(-40, 100, 90, 70);
                rectangle(-1, -1, 1, 1, 0, 80, 255);
              }),
              0);
}

void scissor_cases() {
  CHECK_EQUAL(compare([] {
                driver.glEnable(GL_SCISSOR_TEST);
                driver.glScissor(20, 30, 100, 77);
                rectangle(-1, -1, 1, 1, 200, 80, 0);
                driver.glScissor(80, 55, 14, 12);
                driver.glClearColor(0, 1, 0.5f, 1);
                driver.glClear(GL_COLOR_BUFFER_BIT);
              }),
              0);
}

const GLubyte stripes[32] = {0xff, 0x81, 0xbd, 0xa5, 0xa5, 0xbd, 0x81, 0xff, 0xff, 0x81, 0xbd,
                             0xa5, 0xa5, 0xbd, 0x81, 0xff, 0xff, 0x81, 0xbd, 0xa5, 0xa5, 0xbd,
                             0x81, 0xff, 0xff, 0x81, 0xbd, 0xa5, 0xa5, 0xbd, 0x81, 0xff};

void bitmap() {
  driver.glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
  driver.glBitmap(8, 32, 0, 0, 9, 3, stripes);
  driver.glBitmap(8, 32, 0, 0, 0, 0, stripes);
}

// Each form at a place of its own, so that one that is not shifted shows.
void window_pos_forms() {
  driver.glColor3f(1, 1, 0);
  int place = 0;
#define AT(T) static_cast<T>(3 + place * 12 % 190), static_cast<T>(2 + place * 7 % 110)
#define NEXT  bitmap(), ++place
#define SCALAR(letter, T)                                                                \
  driver.glWindowPos2##letter(AT(T)), NEXT, driver.glWindowPos3##letter(AT(T), 0), NEXT, \
      driver.glWindowPos2##letter##ARB(AT(T)), NEXT, driver.glWindowPos3##letter##ARB(AT(T), 0), NEXT
#define VECTOR(letter, T)                                                                                     \
  do {                                                                                                        \
    void (*const forms[])(const T*) = {driver.glWindowPos2##letter##v, driver.glWindowPos3##letter##v,        \
                                       driver.glWindowPos2##letter##vARB, driver.glWindowPos3##letter##vARB}; \
    for (auto* form : forms) {                                                                                \
      const T values[3] = {AT(T), 0};                                                                         \
      form(values);                                                                                           \
      NEXT;                                                                                                   \
    }                                                                                                         \
  } while (false)
  SCALAR(d, GLdouble);
  SCALAR(f, GLfloat);
  SCALAR(i, GLint);
  SCALAR(s, GLshort);
  VECTOR(d, GLdouble);
  VECTOR(f, GLfloat);
  VECTOR(i, GLint);
  VECTOR(s, GLshort);
#undef AT
#undef NEXT
#undef SCALAR
#undef VECTOR
  CHECK_EQUAL(place, 32);
}

void window_pos_cases() {
  CHECK_EQUAL(compare(window_pos_forms), 0);
  // Shorts near their end, which do not hold the sum with the offset: nothing of it is to be seen, also not wrapped.
  CHECK_EQUAL(compare([] {
                rectangle(-0.5f, -0.5f, 0.5f, 0.5f, 9, 9, 99);
                driver.glWindowPos2s(-32768, -32768);
                bitmap();
              }),
              0);
  GLfloat position[4] = {};
  driver.glGetFloatv(GL_CURRENT_RASTER_POSITION, position);
  CHECK_EQUAL(position[0], -32768 + 9);
}

void raster_pos_cases() {
  CHECK_EQUAL(compare([] {
                driver.glColor3f(0, 1, 1);
                driver.glRasterPos2f(-0.4f, 0.2f);
                bitmap();
                driver.glRasterPos2f(0.1f, -0.9f);
                bitmap();
              }),
              0);
}

// The raster position that nothing has set yet is the window's corner.
void first_raster_position() {
  gl_window window = make_window(parts_window.hwnd, 40, 40, 50, 50, true);
  HGLRC context = driver.wglCreateContext(window.hdc);
  CHECK(driver.wglMakeCurrent(window.hdc, context));
  driver.glViewportOffsetZ4(0, 0);
  driver.glDrawableSizeZ4(width, height);
  driver.glClear(GL_COLOR_BUFFER_BIT);
  const u32 dot = 0xff00ffff;
  driver.glDrawPixels(1, 1, GL_RGBA, GL_UNSIGNED_BYTE, &dot);
  u32 found = 0;
  driver.glReadPixels(0, 0, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, &found);
  CHECK_EQUAL(found & 0xffffff, dot & 0xffffff);
  GLint position[4] = {7, 7, 7, 7};
  driver.glGetIntegerv(GL_CURRENT_RASTER_POSITION, position);
  CHECK_EQUAL(position[0], 0);
  CHECK_EQUAL(position[1], 0);
  CHECK_EQUAL(position[3], 1);
  CHECK(driver.wglDeleteContext(context));
  destroy_window(window);
}

// One pixel of what a part gives for the whole window's (x, y). Black without an answer: it lies in another part.
u32 ask_part(const part* p, int x, int y) {
  u32 found = 0;
  driver.glReadPixels(p ? x - p->left : x, p ? y - p->bottom : y, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, &found);
  return found & 0xffffff;
}

void framebuffer_scene(void (*bind)(GLenum, GLuint), void (*discard)(GLsizei, const GLuint*)) {
  rectangle(-1, -1, 1, 1, 0, 40, 0);
  GLuint framebuffer = 0, renderbuffer = 0;
  driver.glGenFramebuffers(1, &framebuffer);
  driver.glGenRenderbuffers(1, &renderbuffer);
  driver.glBindRenderbuffer(GL_RENDERBUFFER, renderbuffer);
  driver.glRenderbufferStorage(GL_RENDERBUFFER, GL_RGBA8, width, height);
  bind(GL_FRAMEBUFFER, framebuffer);
  driver.glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_RENDERBUFFER, renderbuffer);
  CHECK_EQUAL(driver.glCheckFramebufferStatus(GL_FRAMEBUFFER), GL_FRAMEBUFFER_COMPLETE);

  // Nothing is shifted or cut in the object, and a part reads its own piece of it, counted from its share.
  driver.glClear(GL_COLOR_BUFFER_BIT);
  driver.glViewport(10, 20, 30, 40);
  driver.glEnable(GL_SCISSOR_TEST);
  driver.glScissor(10, 20, 25, 40);
  rectangle(-1, -1, 1, 1, 250, 250, 0);
  CHECK_EQUAL(ask_part(drawn_part, 10, 20), 0x00fafa);
  CHECK_EQUAL(ask_part(drawn_part, 34, 59), 0x00fafa);
  CHECK_EQUAL(ask_part(drawn_part, 35, 59), 0);
  GLint box[4] = {};
  driver.glGetIntegerv(GL_VIEWPORT, box);
  CHECK_EQUAL(box[0], 10);
  CHECK_EQUAL(box[1], 20);
  driver.glDisable(GL_SCISSOR_TEST);

  // From the object to the window, stretched and whole.
  bind(GL_DRAW_FRAMEBUFFER, 0);
  driver.glBlitFramebuffer(10, 20, 35, 60, 75, 40, 125, 120, GL_COLOR_BUFFER_BIT, GL_NEAREST);
  driver.glBlitFramebufferEXT(10, 20, 35, 60, 5, 50, 30, 90, GL_COLOR_BUFFER_BIT, GL_NEAREST);

  // The window again, also with what was set while the object was bound.
  rectangle(-1, -1, 0, 0, 0, 0, 200);
  driver.glEnable(GL_SCISSOR_TEST);
  rectangle(-1, -1, 0, 1, 90, 0, 200);
  driver.glDisable(GL_SCISSOR_TEST);
  bind(GL_FRAMEBUFFER, framebuffer);
  discard(1, &framebuffer);
  driver.glViewport(100, 30, 60, 60);
  rectangle(-1, -1, 1, 1, 250, 0, 250);
  driver.glDeleteRenderbuffers(1, &renderbuffer);
}

void framebuffer_cases() {
  CHECK_EQUAL(compare([] { framebuffer_scene(driver.glBindFramebuffer, driver.glDeleteFramebuffers); }), 0);
  CHECK_EQUAL(compare([] { framebuffer_scene(driver.glBindFramebufferEXT, driver.glDeleteFramebuffersEXT); }), 0);
}

// From the window to an object: within a part, as nothing is to be read outside. `asked` as ask_part takes it.
void blit_and_read(const part& p, const part* asked) {
  begin(p);
  clear();
  driver.glEnable(GL_SCISSOR_TEST);
  driver.glScissor(100, 70, 10, 10);
  rectangle(-1, -1, 1, 1, 1, 2, 3);
  driver.glDisable(GL_SCISSOR_TEST);
  GLuint framebuffer = 0, renderbuffer = 0;
  driver.glGenFramebuffers(1, &framebuffer);
  driver.glGenRenderbuffers(1, &renderbuffer);
  driver.glBindRenderbuffer(GL_RENDERBUFFER, renderbuffer);
  driver.glRenderbufferStorage(GL_RENDERBUFFER, GL_RGBA8, 40, 40);
  driver.glBindFramebuffer(GL_DRAW_FRAMEBUFFER, framebuffer);
  driver.glFramebufferRenderbuffer(GL_DRAW_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_RENDERBUFFER, renderbuffer);
  driver.glBlitFramebuffer(100, 70, 110, 80, 5, 6, 15, 16, GL_COLOR_BUFFER_BIT, GL_NEAREST);
  driver.glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
  CHECK_EQUAL(ask_part(asked, 5, 6), 0x030201);
  CHECK_EQUAL(ask_part(asked, 14, 15), 0x030201);
  driver.glDeleteFramebuffers(1, &framebuffer);
  driver.glDeleteRenderbuffers(1, &renderbuffer);
  CHECK_EQUAL(driver.glGetError(), GL_NO_ERROR);
}

void read_blit() {
  blit_and_read(parts[3], &parts[3]);
}

template <class Op>
typename Op::type* by_name() {
  return reinterpret_cast<typename Op::type*>(reinterpret_cast<void*>(driver.wglGetProcAddress(Op::name)));
}

void expect_box(GLuint viewport, const GLint (&expected)[4]) {
  GLint box[4] = {};
  driver.glGetIntegeri_v(GL_SCISSOR_BOX, viewport, box);
  for (int i = 0; i < 4; ++i) CHECK_EQUAL(box[i], expected[i]);
}

// Boxes of several viewports. From here on the contexts are drawn whole.
void indexed_scissor_cases() {
  CHECK_EQUAL(compare([] {
                driver.glEnable(GL_SCISSOR_TEST);
                by_name<glScissorIndexed_op>()(0, 20, 30, 100, 77);
                by_name<glScissorIndexed_op>()(1, 1, 2, 3, 4);
                rectangle(-1, -1, 1, 1, 200, 80, 0);
                expect_box(0, {20, 30, 100, 77});
                expect_box(1, {1, 2, 3, 4});
                const GLint boxes[] = {60, 20, 70, 90, 5, 6, 7, 8};
                by_name<glScissorArrayv_op>()(0, 2, boxes);
                rectangle(-1, -1, 1, 1, 0, 80, 200);
                expect_box(1, {5, 6, 7, 8});
                by_name<glScissorIndexedv_op>()(0, boxes + 4);
                driver.glDisablei(GL_SCISSOR_TEST, 1);
                driver.glClearColor(0, 1, 0.5f, 1);
                driver.glClear(GL_COLOR_BUFFER_BIT);
                CHECK(driver.glIsEnabledi(GL_SCISSOR_TEST, 0) && !driver.glIsEnabledi(GL_SCISSOR_TEST, 1));
              }),
              0);
}

// In the extended mode an object is read whole from one part.
void read_whole() {
  SetEnvironmentVariableA("OSW_EXTENDED", "1");
  make_part_context(parts[3].window);
  SetEnvironmentVariableA("OSW_EXTENDED", nullptr);
  blit_and_read(parts[3], nullptr);
}

void attribute_cases() {
  CHECK_EQUAL(compare([] {
                driver.glViewport(30, 10, 100, 100);
                driver.glScissor(60, 30, 90, 90);
                driver.glPushAttrib(GL_VIEWPORT_BIT | GL_SCISSOR_BIT);
                driver.glViewport(0, 0, 5, 5);
                driver.glScissor(1, 1, 5, 5);
                driver.glPopAttrib();
                driver.glEnable(GL_SCISSOR_TEST);
                rectangle(-1, -1, 1, 1, 100, 200, 50);
              }),
              0);
}

// A list that is compiled under the offset in force when it is called shows the same as direct calls.
void list_cases() {
  CHECK_EQUAL(compare([] {
                const GLuint list = driver.glGenLists(1);
                driver.glNewList(list, GL_COMPILE);
                driver.glViewport(50, 40, 80, 70);
                rectangle(-1, -1, 1, 1, 0, 200, 250);
                driver.glEndList();
                GLint box[4] = {};
                driver.glGetIntegerv(GL_VIEWPORT, box);
                CHECK_EQUAL(box[0], 0);
                driver.glCallList(list);
                driver.glGetIntegerv(GL_VIEWPORT, box);
                CHECK_EQUAL(box[0], 50);
                driver.glDeleteLists(list, 1);
              }),
              0);
}

GLuint make_program(const char* fragment_source) {
  const GLuint shader = driver.glCreateShader(GL_FRAGMENT_SHADER), program = driver.glCreateProgram();
  driver.glShaderSource(shader, 1, &fragment_source, nullptr);
  driver.glCompileShader(shader);
  driver.glAttachShader(program, shader);
  driver.glLinkProgram(program);
  driver.glDeleteShader(shader);
  GLint linked = 0;
  driver.glGetProgramiv(program, GL_LINK_STATUS, &linked);
  CHECK_EQUAL(linked, GL_TRUE);
  return program;
}

void draw_shaded(const char* fragment_source) {
  const GLuint program = make_program(fragment_source);
  driver.glUseProgram(program);
  driver.glRectf(-0.95f, -0.9f, 0.9f, 0.97f);
  driver.glUseProgram(0);
  driver.glDeleteProgram(program);
}

// Where a fragment lies, which shaders make patterns of.
void fragment_coordinates() {
  CHECK_EQUAL(
      compare([] {
        draw_shaded("void main() { gl_FragColor = vec4(gl_FragCoord.xy / 255.0, fract(gl_FragCoord.z), 1.0); }");
      }),
      0);
}

// Renderers take the difference between neighbours within blocks of two by two, counted from the drawable's corner: at
// an odd place other pixels would be neighbours.
void derivatives() {
  CHECK_EQUAL(compare([] {
                draw_shaded(
                    "void main() { vec2 at = gl_FragCoord.xy; float wave = sin(at.x * at.x * 0.01 + at.y * 0.3);"
                    " gl_FragColor = vec4(abs(dFdx(wave)), abs(dFdy(wave)), fwidth(at.x * at.y) / 400.0, 1.0); }");
              }),
              0);
}

// Patterns begin at the window's corner.
void stipples() {
  CHECK_EQUAL(compare([] {
                GLubyte pattern[128];
                for (int i = 0; i < 128; ++i) pattern[i] = static_cast<GLubyte>(i * 37 + i / 4 * 11);
                driver.glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
                driver.glPolygonStipple(pattern);
                driver.glEnable(GL_POLYGON_STIPPLE);
                rectangle(-0.9f, -0.95f, 0.97f, 0.9f, 250, 200, 0);
                driver.glDisable(GL_POLYGON_STIPPLE);
              }),
              0);
}

void expect_same_feedback(GLuint list, const GLfloat (&wanted)[64], GLint count) {
  GLfloat values[64] = {};
  driver.glFeedbackBuffer(64, GL_3D, values);
  driver.glRenderMode(GL_FEEDBACK);
  driver.glCallList(list);
  CHECK_EQUAL(driver.glRenderMode(GL_RENDER), count);
  int different = 0;
  for (int i = 0; i < count; ++i) different += values[i] != wanted[i];
  CHECK_EQUAL(different, 0);
}

GLuint compile_positions() {
  const GLuint list = driver.glGenLists(1);
  driver.glNewList(list, GL_COMPILE);
  driver.glViewport(13, 17, 150, 110);
  driver.glBegin(GL_TRIANGLES);
  driver.glVertex2f(-0.5f, -0.25f);
  driver.glVertex2f(0.75f, -0.5f);
  driver.glVertex2f(0.3f, 0.8f);
  driver.glEnd();
  driver.glWindowPos2i(40, 30);
  driver.glBitmap(8, 1, 0, 0, 3, 4, stripes);
  driver.glBitmap(8, 1, 0, 0, 0, 0, stripes);
  driver.glEndList();
  return list;
}

// What a program hears of where things come to lie, from which it draws or prints by itself.
void feedback() {
  CHECK(driver.wglMakeCurrent(whole_window.hdc, whole_context));
  driver.glViewport(0, 0, width, height);
  const GLuint list = compile_positions();
  GLfloat wanted[64] = {};
  driver.glFeedbackBuffer(64, GL_3D, wanted);
  driver.glRenderMode(GL_FEEDBACK);
  driver.glCallList(list);
  const GLint count = driver.glRenderMode(GL_RENDER);
  CHECK_EQUAL(count, 1 + 1 + 9 + 2 * 4);
  driver.glDeleteLists(list, 1);
  for (const part& p : parts) {
    begin(p);
    const GLuint lists_own = compile_positions();
    expect_same_feedback(lists_own, wanted, count);
    driver.glDeleteLists(lists_own, 1);
  }
}

const test_case cases[] = {
    {"windows", make_windows},
    {"fragment-coordinates", fragment_coordinates},
    {"derivatives", derivatives},
    {"stipples", stipples},
    {"feedback", feedback},
    {"viewport", viewport_cases},
    {"scissor", scissor_cases},
    {"window-pos", window_pos_cases},
    {"raster-pos", raster_pos_cases},
    {"first-raster-position", first_raster_position},
    {"framebuffer", framebuffer_cases},
    {"read-blit", read_blit},
    {"attributes", attribute_cases},
    {"lists", list_cases},
    {"indexed-scissor", indexed_scissor_cases},
    {"read-whole", read_whole},  // the last one: from now on the process is a spread one
};

}  // namespace

int main(int argc, char** argv) {
  load_driver();
  return run_cases(cases, sizeof cases / sizeof *cases, argc, argv, 60);
}
