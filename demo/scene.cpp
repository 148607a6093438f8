#include "scene.h"

#include <windows.h>
// GL's header needs the one above.
#include <GL/gl.h>

#include <cmath>
#include <cstdio>

namespace {

// Lines of the ground to each side of its middle.
constexpr int grid_lines = 10;

// The number 1, 2 or 5 times a power of ten that is next above.
float round_step(float length) {
  const float power = powf(10.0f, floorf(log10f(length)));
  for (float factor : {1.0f, 2.0f, 5.0f}) {
    if (length <= factor * power) return factor * power;
  }
  return 10 * power;
}

vec3 ground_middle(const scene& drawn) {
  const model& shown = *drawn.shown;
  // On a line of the grid's own numbers, so that the labels are round.
  const auto snapped = [&](float value) { return drawn.grid_step * roundf(value / drawn.grid_step); };
  return {snapped((shown.low.x + shown.high.x) / 2), snapped((shown.low.y + shown.high.y) / 2), shown.low.z};
}

// A light that stands with the model, one from the other side to soften it, and a weak one at the camera.
void place_lights(const camera& view) {
  struct light {
    GLfloat place[4], colour[4];
  };
  static const light fixed[2] = {{{0.5f, -0.7f, 1.0f, 0}, {0.85f, 0.83f, 0.78f, 1}},
                                 {{-0.8f, 0.6f, 0.3f, 0}, {0.22f, 0.26f, 0.34f, 1}}};
  for (GLenum i = 0; i < 2; ++i) {
    glLightfv(GL_LIGHT0 + i, GL_POSITION, fixed[i].place);
    glLightfv(GL_LIGHT0 + i, GL_DIFFUSE, fixed[i].colour);
    glLightfv(GL_LIGHT0 + i, GL_SPECULAR, fixed[i].colour);
    glEnable(GL_LIGHT0 + i);
  }
  const GLfloat at_camera[4] = {0, view.radius, 0, 1}, weak[4] = {0.25f, 0.25f, 0.25f, 1};
  glPushMatrix();
  glLoadIdentity();
  glLightfv(GL_LIGHT2, GL_POSITION, at_camera);
  glPopMatrix();
  glLightfv(GL_LIGHT2, GL_DIFFUSE, weak);
  glEnable(GL_LIGHT2);
}

void draw_model(const scene& drawn) {
  glEnable(GL_LIGHTING);
  // The faces step back a little, so that the edges on them stay whole.
  glEnable(GL_POLYGON_OFFSET_FILL);
  glPolygonOffset(1, 1);
  drawn.by->draw_faces(drawn.kept);
  glDisable(GL_POLYGON_OFFSET_FILL);
  glDisable(GL_LIGHTING);
  if (drawn.show_edges) drawn.by->draw_edges(drawn.kept);
}

// The box around the model, with its three lengths.
void draw_dimensions(const scene& drawn) {
  const vec3 low = drawn.shown->low, high = drawn.shown->high;
  const float xs[2] = {low.x, high.x}, ys[2] = {low.y, high.y}, zs[2] = {low.z, high.z};
  glColor3f(0.45f, 0.52f, 0.30f);
  glBegin(GL_LINES);
  for (int i = 0; i < 2; ++i) {
    for (int j = 0; j < 2; ++j) {
      glVertex3f(xs[0], ys[i], zs[j]);
      glVertex3f(xs[1], ys[i], zs[j]);
      glVertex3f(xs[i], ys[0], zs[j]);
      glVertex3f(xs[i], ys[1], zs[j]);
      glVertex3f(xs[i], ys[j], zs[0]);
      glVertex3f(xs[i], ys[j], zs[1]);
    }
  }
  glEnd();
  char words[64];
  glColor3f(0.80f, 0.90f, 0.55f);
  snprintf(words, sizeof words, "%.1f", static_cast<double>(high.x - low.x));
  draw_text_at(drawn.small, {(low.x + high.x) / 2, low.y, high.z}, words);
  snprintf(words, sizeof words, "%.1f", static_cast<double>(high.y - low.y));
  draw_text_at(drawn.small, {high.x, (low.y + high.y) / 2, high.z}, words);
  snprintf(words, sizeof words, "%.1f", static_cast<double>(high.z - low.z));
  draw_text_at(drawn.small, {low.x, low.y, (low.z + high.z) / 2}, words);
}

void draw_ground_labels(const scene& drawn) {
  const vec3 middle = ground_middle(drawn);
  glColor3f(0.55f, 0.60f, 0.68f);
  for (int i = -grid_lines; i <= grid_lines; i += 5) {
    const float along = drawn.grid_step * static_cast<float>(i), half = drawn.grid_step * (grid_lines + 0.4f);
    char words[32];
    snprintf(words, sizeof words, "%g", static_cast<double>(middle.x + along));
    draw_text_at(drawn.small, {middle.x + along, middle.y - half, middle.z}, words);
    snprintf(words, sizeof words, "%g", static_cast<double>(middle.y + along));
    draw_text_at(drawn.small, {middle.x + half, middle.y + along, middle.z}, words);
  }
}

}  // namespace

bool make_scene(const model& shown, const renderer& by, scene* result, std::string* why) {
  scene& drawn = *result;
  drawn = {};
  drawn.shown = &shown;
  drawn.by = &by;
  drawn.small = make_font(1);
  drawn.large = make_font(2);
  const vec3 size = shown.high - shown.low;
  drawn.grid_step = round_step(sqrtf(dot(size, size)) / 14);
  drawn.show_ground = drawn.show_edges = drawn.show_labels = true;
  drawn.kept.shown = &shown;
  drawn.kept.shapes = make_geometry(shown, ground_middle(drawn), drawn.grid_step, grid_lines);
  if (!by.prepare(&drawn.kept, why)) return false;

  glClearColor(0.11f, 0.13f, 0.16f, 1);
  glEnable(GL_DEPTH_TEST);
  glDepthFunc(GL_LEQUAL);
  glEnable(GL_NORMALIZE);
  glLightModeli(GL_LIGHT_MODEL_TWO_SIDE, GL_TRUE);
  return true;
}

void draw_scene(const scene& drawn, const camera& view, int width, int height) {
  glViewport(0, 0, width, height);
  glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
  apply_camera(view, width, height);
  place_lights(view);
  if (drawn.show_ground) drawn.by->draw_ground(drawn.kept);
  draw_model(drawn);
  if (!drawn.show_labels) return;
  draw_dimensions(drawn);
  if (drawn.show_ground) draw_ground_labels(drawn);
}
