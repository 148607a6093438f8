// Fixed-function drawing, in windows that lie over the seams of 2 and of 4 parts.
#include <cmath>

#include "scene.h"

namespace {

constexpr place over_all = {480, 231, 641, 423};  // over 800,450, with odd edges

void clear_to(float red, float green, float blue) {
  glClearColor(red, green, blue, 1);
  glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT | GL_STENCIL_BUFFER_BIT);
}

// One unit is one pixel, with the origin at the lower left.
void use_pixels() {
  glMatrixMode(GL_PROJECTION);
  glLoadIdentity();
  glOrtho(0, over_all.width, 0, over_all.height, -1, 1);
  glMatrixMode(GL_MODELVIEW);
  glLoadIdentity();
}

void use_camera(double turned) {
  glMatrixMode(GL_PROJECTION);
  glLoadIdentity();
  glFrustum(-1.5, 1.5, -1, 1, 2, 40);
  glMatrixMode(GL_MODELVIEW);
  glLoadIdentity();
  glTranslated(0, 0, -6);
  glRotated(turned, 0.3, 1, 0.2);
}

void rectangle(int left, int bottom, int right, int top) {
  glRecti(left, bottom, right, top);
}

// A torus of lit facets, 32 by 16.
void torus() {
  constexpr int around = 32, across = 16;
  constexpr double whole = 6.283185307179586;
  for (int i = 0; i < around; ++i) {
    glBegin(GL_QUAD_STRIP);
    for (int j = 0; j <= across; ++j) {
      for (int k = 1; k >= 0; --k) {
        const double u = whole * (i + k) / around, v = whole * j / across;
        glNormal3d(std::cos(u) * std::cos(v), std::sin(u) * std::cos(v), std::sin(v));
        glVertex3d(std::cos(u) * (2 + 0.8 * std::cos(v)), std::sin(u) * (2 + 0.8 * std::cos(v)), 0.8 * std::sin(v));
      }
    }
    glEnd();
  }
}

void clears() {
  begin_scene(__func__);
  const gl_window window = make_window(over_all);
  clear_to(0.25f, 0.5f, 0.75f);
  glEnable(GL_SCISSOR_TEST);
  for (int i = 0; i < 9; ++i) {
    glScissor(20 + 60 * i, 15 + 40 * i, 110, 70);
    clear_to(0.1f * static_cast<float>(i), 1 - 0.1f * static_cast<float>(i), 0.5f);
  }
  show(window, "scissored");
  glScissor(300, 0, 40, over_all.height);
  clear_to(1, 1, 0);
  glDisable(GL_SCISSOR_TEST);
  glColorMask(GL_TRUE, GL_FALSE, GL_FALSE, GL_TRUE);
  clear_to(0.9f, 0.9f, 0.9f);
  glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
  glEnable(GL_SCISSOR_TEST);
  glScissor(-50, -50, 300, 300);
  clear_to(0, 0.3f, 0);
  glDisable(GL_SCISSOR_TEST);
  show(window, "masked");
  destroy_window(window);
}

void vertices_of(GLenum kind, int left, int bottom) {
  static const int at[8][2] = {{0, 0}, {90, 8}, {12, 50}, {96, 60}, {20, 100}, {104, 108}, {30, 150}, {110, 156}};
  // A polygon must be convex.
  static const int round[8][2] = {{0, 40}, {20, 5}, {60, 0}, {95, 30}, {100, 80}, {80, 130}, {40, 150}, {5, 110}};
  const auto* corners = kind == GL_POLYGON || kind == GL_TRIANGLE_FAN ? round : at;
  glBegin(kind);
  for (int i = 0; i < 8; ++i) {
    glColor3ub(static_cast<GLubyte>(30 * i), static_cast<GLubyte>(255 - 30 * i), static_cast<GLubyte>(60 + 20 * i));
    glVertex2i(left + corners[i][0], bottom + corners[i][1]);
  }
  glEnd();
}

void all_kinds() {
  for (GLenum kind = GL_POINTS; kind <= GL_POLYGON; ++kind) {
    const int column = static_cast<int>(kind) % 5, row = static_cast<int>(kind) / 5;
    vertices_of(kind, 15 + 125 * column, 20 + 200 * row);
  }
}

void primitives() {
  begin_scene(__func__);
  const gl_window window = make_window(over_all);
  use_pixels();
  clear_to(0.05f, 0.05f, 0.1f);
  glPointSize(5);
  all_kinds();
  show(window, "plain");
  clear_to(0.9f, 0.9f, 0.85f);
  glLineWidth(3);
  glPolygonMode(GL_FRONT_AND_BACK, GL_LINE);
  glShadeModel(GL_FLAT);
  all_kinds();
  show(window, "outlines");
  clear_to(0.3f, 0.1f, 0.1f);
  glLineWidth(1);
  // Not along a strip, where each length is rounded before the next begins.
  glEnable(GL_LINE_STIPPLE);
  glLineStipple(2, 0x3f07);
  vertices_of(GL_LINES, 270, 230);
  glDisable(GL_LINE_STIPPLE);
  glPolygonMode(GL_FRONT, GL_POINT);
  glPolygonMode(GL_BACK, GL_FILL);
  glEnable(GL_CULL_FACE);
  all_kinds();
  show(window, "culled");
  destroy_window(window);
}

void set_lights() {
  static const GLfloat positions[2][4] = {{4, 5, 6, 1}, {-1, 0.5f, 0.2f, 0}};
  static const GLfloat colours[2][4] = {{1, 0.9f, 0.7f, 1}, {0.2f, 0.3f, 0.6f, 1}};
  static const GLfloat ambient[4] = {0.1f, 0.15f, 0.1f, 1}, shine[4] = {1, 1, 1, 1};
  glEnable(GL_LIGHTING);
  glEnable(GL_NORMALIZE);
  for (int i = 0; i < 2; ++i) {
    glEnable(GL_LIGHT0 + i);
    glLightfv(GL_LIGHT0 + i, GL_POSITION, positions[i]);
    glLightfv(GL_LIGHT0 + i, GL_DIFFUSE, colours[i]);
  }
  glLightModelfv(GL_LIGHT_MODEL_AMBIENT, ambient);
  glLightModeli(GL_LIGHT_MODEL_TWO_SIDE, 1);
  glMaterialfv(GL_FRONT, GL_SPECULAR, shine);
  glMaterialf(GL_FRONT, GL_SHININESS, 24);
}

void lights() {
  begin_scene(__func__);
  const gl_window window = make_window(over_all);
  static const GLfloat skin[2][4] = {{0.8f, 0.3f, 0.2f, 1}, {0.2f, 0.7f, 0.3f, 1}}, haze[4] = {0.5f, 0.5f, 0.55f, 1};
  glEnable(GL_DEPTH_TEST);
  use_camera(0);
  set_lights();
  for (int frame = 0; frame < 3; ++frame) {
    clear_to(0.5f, 0.5f, 0.55f);
    use_camera(15 + 40 * frame);
    glMaterialfv(GL_FRONT_AND_BACK, GL_AMBIENT_AND_DIFFUSE, skin[frame % 2]);
    if (frame == 2) {
      glEnable(GL_FOG);
      glFogi(GL_FOG_MODE, GL_LINEAR);
      glFogfv(GL_FOG_COLOR, haze);
      glFogf(GL_FOG_START, 4);
      glFogf(GL_FOG_END, 9);
    }
    torus();
    glRotatef(90, 1, 0, 0);
    glEnable(GL_COLOR_MATERIAL);
    glColor3f(0.2f, 0.4f, 0.9f);
    torus();
    glDisable(GL_COLOR_MATERIAL);
    show(window, frame == 0 ? "first" : frame == 1 ? "second" : "fog");
  }
  destroy_window(window);
}

void blending() {
  begin_scene(__func__);
  const gl_window window = make_window(over_all);
  use_pixels();
  static const GLenum factors[4][2] = {{GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA},
                                       {GL_ONE, GL_ONE},
                                       {GL_DST_COLOR, GL_ZERO},
                                       {GL_ONE_MINUS_DST_COLOR, GL_ONE_MINUS_SRC_COLOR}};
  clear_to(0.3f, 0.4f, 0.2f);
  glEnable(GL_BLEND);
  for (int i = 0; i < 4; ++i) {
    glBlendFunc(factors[i][0], factors[i][1]);
    for (int k = 0; k < 6; ++k) {
      glColor4f(0.15f * static_cast<float>(k), 0.8f, 1 - 0.15f * static_cast<float>(k), 0.4f);
      rectangle(30 + 145 * i + 15 * k, 40 + 50 * k, 130 + 145 * i + 10 * k, 130 + 45 * k);
    }
  }
  show(window, "blended");
  glDisable(GL_BLEND);
  glEnable(GL_COLOR_LOGIC_OP);
  glLogicOp(GL_XOR);
  glColor4f(1, 1, 0, 0);
  rectangle(200, 100, 500, 300);
  glLogicOp(GL_INVERT);
  rectangle(250, 20, 420, 400);
  show(window, "logic");
  destroy_window(window);
}

void hidden_parts() {
  begin_scene(__func__);
  const gl_window window = make_window(over_all);
  glEnable(GL_STENCIL_TEST);
  use_pixels();
  clear_to(0.7f, 0.7f, 0.8f);
  glStencilFunc(GL_ALWAYS, 1, 255);
  glStencilOp(GL_KEEP, GL_REPLACE, GL_REPLACE);
  glColorMask(GL_FALSE, GL_FALSE, GL_FALSE, GL_FALSE);
  glBegin(GL_TRIANGLE_FAN);
  for (int i = 0; i < 24; ++i) glVertex2d(320 + 300 * std::cos(i * 0.2618), 210 + 200 * std::sin(i * 0.2618));
  glEnd();
  glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
  glStencilFunc(GL_EQUAL, 1, 255);
  glStencilOp(GL_KEEP, GL_KEEP, GL_INCR);
  glEnable(GL_DEPTH_TEST);
  use_camera(30);
  set_lights();
  torus();
  show(window, "stencil");
  glDisable(GL_LIGHTING);
  glStencilFunc(GL_LESS, 1, 255);
  glDepthFunc(GL_GREATER);
  static const GLdouble plane[4] = {0.5, 1, 0, 0.2};
  glClipPlane(GL_CLIP_PLANE0, plane);
  glEnable(GL_CLIP_PLANE0);
  glColor3f(1, 0.9f, 0);
  glLineWidth(2);
  glPolygonMode(GL_FRONT_AND_BACK, GL_LINE);
  glTranslated(0, 0, -0.5);
  torus();
  show(window, "behind");
  destroy_window(window);
}

void draw_view(int number) {
  glClearColor(0.15f * static_cast<float>(number), 0.3f, 0.4f, 1);
  glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
  use_camera(37 * number);
  torus();
}

void viewports() {
  begin_scene(__func__);
  const gl_window window = make_window(over_all);
  glEnable(GL_DEPTH_TEST);
  set_lights();
  clear_to(0, 0, 0);
  glEnable(GL_SCISSOR_TEST);
  static const int views[5][4] = {
      {5, 5, 300, 200}, {315, 5, 320, 200}, {5, 215, 300, 200}, {315, 215, 320, 200}, {220, 140, 200, 140}};
  for (int i = 0; i < 5; ++i) {
    const int* v = views[i];
    glPushAttrib(GL_VIEWPORT_BIT | GL_SCISSOR_BIT);
    glViewport(v[0], v[1], v[2], v[3]);
    glScissor(v[0], v[1], v[2], v[3]);
    draw_view(i);
    glPopAttrib();
  }
  glDisable(GL_SCISSOR_TEST);
  show(window, "views");
  glViewport(-200, -150, 1200, 900);
  clear_to(0.8f, 0.8f, 0.8f);
  use_camera(70);
  torus();
  show(window, "larger");
  GLint box[4];
  glGetIntegerv(GL_VIEWPORT, box);
  note("viewport %d %d %d %d", box[0], box[1], box[2], box[3]);
  glGetIntegerv(GL_SCISSOR_BOX, box);
  note("scissor %d %d %d %d", box[0], box[1], box[2], box[3]);
  destroy_window(window);
}

void compile_letters(GLuint base) {
  for (GLuint i = 0; i < 6; ++i) {
    glNewList(base + i, GL_COMPILE);
    glBegin(GL_TRIANGLE_FAN);
    for (GLuint k = 0; k < 3 + i; ++k)
      glVertex2d(30 * std::cos(k * 6.2832 / (3 + i)), 30 * std::sin(k * 6.2832 / (3 + i)));
    glEnd();
    glTranslated(70, 0, 0);
    glEndList();
  }
}

void lists() {
  begin_scene(__func__);
  const gl_window window = make_window(over_all);
  use_pixels();
  clear_to(0.1f, 0.2f, 0.2f);
  const GLuint base = glGenLists(8);
  note("lists %d %d", base != 0, glIsList(base));
  compile_letters(base);
  glNewList(base + 6, GL_COMPILE_AND_EXECUTE);
  glPushMatrix();
  glColor3f(0.9f, 0.6f, 0.1f);
  glTranslated(60, 60, 0);
  for (GLuint i = 0; i < 6; ++i) glCallList(base + i);
  glPopMatrix();
  glEndList();
  show(window, "executed");
  static const GLubyte letters[] = {5, 4, 3, 2, 1, 0, 3, 3};
  clear_to(0.3f, 0.2f, 0.2f);
  glListBase(base);
  for (int row = 0; row < 5; ++row) {
    glPushMatrix();
    glColor3d(0.2 * row, 0.7, 1 - 0.2 * row);
    glTranslated(50 + 15 * row, 50 + 80 * row, 0);
    glCallLists(8 - row, GL_UNSIGNED_BYTE, letters + row);
    glPopMatrix();
  }
  glListBase(0);
  show(window, "called");
  glDeleteLists(base, 6);
  clear_to(0.2f, 0.2f, 0.3f);
  glCallList(base + 6);
  glColor3f(1, 1, 1);
  rectangle(300, 100, 330, 330);
  show(window, "deleted");
  note("lists %d %d", glIsList(base), glIsList(base + 6));
  destroy_window(window);
}

// Thousands of commands in a frame, more than a list holds, over many frames.
void many_frames() {
  begin_scene(__func__);
  const gl_window window = make_window(over_all);
  glEnable(GL_DEPTH_TEST);
  set_lights();
  for (int frame = 0; frame < 40; ++frame) {
    clear_to(0.02f * static_cast<float>(frame), 0.3f, 0.4f);
    use_camera(9 * frame);
    for (int i = 0; i < 3; ++i) {
      glRotatef(60, 1, 0.5f, 0);
      torus();
    }
    if (frame == 20) show(window, "halfway");
    if (frame == 39) {
      show(window, "last");
    } else {
      CHECK(SwapBuffers(window.hdc));
    }
  }
  destroy_window(window);
}

}  // namespace

const scene_group drawing_scenes = {"drawing",
                                    {{"clears", clears},
                                     {"primitives", primitives},
                                     {"lights", lights},
                                     {"blending", blending},
                                     {"hidden_parts", hidden_parts},
                                     {"viewports", viewports},
                                     {"lists", lists},
                                     {"many_frames", many_frames}}};
