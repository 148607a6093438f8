#include "overlay.h"

#include <windows.h>
// GL's header needs the one above.
#include <GL/gl.h>

#include <algorithm>

namespace {

constexpr int margin = 16;
constexpr int bar_height = 22;

// Puts the raster position into the middle of a pixel, where no rounding can move it to the next.
void text_in_window(const font& letters, int x, int y, const std::string& text) {
  glRasterPos2f(static_cast<GLfloat>(x) + 0.5f, static_cast<GLfloat>(y) + 0.5f);
  draw_text(letters, text);
}

void fill_rectangle(int x, int y, int width, int height) {
  glRecti(x, y, x + width, y + height);
}

// Across the middle of the window, where most seams between screens are.
void draw_title(const scene& drawn, int width, int height) {
  const std::string& name = drawn.shown->name;
  glColor3f(0.93f, 0.94f, 0.96f);
  text_in_window(drawn.large, std::max(0, (width - text_width(drawn.large, name)) / 2), height - margin - 14, name);
  std::string counts = std::to_string(drawn.shown->triangles.size()) + " triangles, " +
                       std::to_string(drawn.shown->edges.size()) + " edges";
  glColor3f(0.66f, 0.70f, 0.76f);
  text_in_window(drawn.small, std::max(0, (width - text_width(drawn.small, counts)) / 2), height - margin - 30, counts);
}

// A swatch and a name for each material, down the left side around the middle.
void draw_materials(const scene& drawn, int height) {
  const std::vector<material>& all = drawn.shown->materials;
  const int row = 18, most = std::max(1, (height / 2) / row);
  const int rows = std::min(static_cast<int>(all.size()), most);
  int y = height / 2 + rows * row / 2;
  for (int i = 0; i < rows; ++i) {
    const material& of = all[static_cast<size_t>(i)];
    y -= row;
    glColor3fv(of.diffuse);
    fill_rectangle(margin, y, 12, 12);
    glColor3f(0.80f, 0.83f, 0.88f);
    text_in_window(drawn.small, margin + 20, y + 2, of.name);
  }
}

void draw_status(const scene& drawn, int width, const std::string& status) {
  glEnable(GL_BLEND);
  glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
  glColor4f(0.20f, 0.30f, 0.46f, 0.75f);
  fill_rectangle(0, 0, width, bar_height);
  glDisable(GL_BLEND);
  glColor3f(0.90f, 0.93f, 0.97f);
  text_in_window(drawn.small, margin, 8, status);
  const std::string hints = "left: rotate  right: pan  wheel: zoom  R: reset  G E L: ground edges labels";
  const int x = width - margin - text_width(drawn.small, hints);
  if (x > margin + text_width(drawn.small, status)) text_in_window(drawn.small, x, 8, hints);
}

// The three directions, in a square of their own in the lower left corner.
void draw_axes(const scene& drawn, const camera& view) {
  const int size = 96;
  glViewport(margin, bar_height + margin, size, size);
  glMatrixMode(GL_PROJECTION);
  glLoadIdentity();
  glOrtho(-1.4, 1.4, -1.4, 1.4, -2, 2);
  glMatrixMode(GL_MODELVIEW);
  glLoadIdentity();
  apply_rotation(view);
  static const struct {
    vec3 end;
    const char* name;
    GLfloat colour[3];
  } axes[3] = {{{1, 0, 0}, "X", {0.95f, 0.35f, 0.30f}},
               {{0, 1, 0}, "Y", {0.45f, 0.85f, 0.35f}},
               {{0, 0, 1}, "Z", {0.40f, 0.60f, 1.00f}}};
  glLineWidth(2);
  for (const auto& axis : axes) {
    glColor3fv(axis.colour);
    glBegin(GL_LINES);
    glVertex3f(0, 0, 0);
    glVertex3fv(&axis.end.x);
    glEnd();
    draw_text_at(drawn.small, axis.end * 1.15f, axis.name);
  }
  glLineWidth(1);
}

}  // namespace

void draw_overlay(const scene& drawn, const camera& view, int width, int height, const std::string& status) {
  if (!drawn.show_labels) return;
  glDisable(GL_DEPTH_TEST);
  glMatrixMode(GL_PROJECTION);
  glLoadIdentity();
  glOrtho(0, width, 0, height, -1, 1);
  glMatrixMode(GL_MODELVIEW);
  glLoadIdentity();
  draw_title(drawn, width, height);
  draw_materials(drawn, height);
  draw_status(drawn, width, status);
  draw_axes(drawn, view);
  glViewport(0, 0, width, height);
  glEnable(GL_DEPTH_TEST);
}
