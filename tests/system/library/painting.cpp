#include "painting.h"

#include <cmath>

namespace {

void ring(double x, double y, double radius, int corners) {
  // Off the pixels' middles and edges, where a rounding decides which pixel is drawn.
  glTranslatef(0.37f, 0.23f, 0);
  glBegin(GL_LINE_LOOP);
  for (int i = 0; i < corners; ++i) {
    const double angle = 6.283185307179586 * i / corners;
    glVertex2d(x + radius * std::cos(angle), y + radius * std::sin(angle));
  }
  glEnd();
  glTranslatef(-0.37f, -0.23f, 0);
}

}  // namespace

void paint(HWND hwnd, int number) {
  const place at = client_place(hwnd);
  glViewport(0, 0, at.width, at.height);
  glMatrixMode(GL_PROJECTION);
  glLoadIdentity();
  glOrtho(0, at.width, 0, at.height, -1, 1);
  glMatrixMode(GL_MODELVIEW);
  glLoadIdentity();
  glClearColor(0.125f * static_cast<float>(number % 7), 0.25f, 0.0625f * static_cast<float>(number % 13), 1);
  glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
  for (int i = 0; i < 12; ++i) {
    const int left = 23 * i + 11 * number % 40, bottom = 17 * i + 5 * number % 30;
    glColor3ub(static_cast<GLubyte>(20 * i), static_cast<GLubyte>(255 - 40 * (number % 6)), 200);
    glRecti(left, bottom, left + at.width / 3, bottom + at.height / 5);
    glColor3ub(255, static_cast<GLubyte>(20 * i), static_cast<GLubyte>(37 * number));
    ring(at.width / 2.0 + number, at.height / 2.0, (i + 1) * at.height / 20.0, 3 + i + number % 5);
  }
  glBegin(GL_LINES);
  for (int i = 0; i <= 10; ++i) {
    glVertex2d(at.width * i / 10.0 + 0.37, 0.71);
    glVertex2d(at.width - at.width * i / 10.0 + 0.19, at.height - 0.66);
  }
  glEnd();
}

void paint_and_show(const gl_window& window, int number, const char* step) {
  paint(window.hwnd, number);
  show(window, step);
}
