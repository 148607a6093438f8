#include "camera.h"

#include <windows.h>
// GL's header needs the one above.
#include <GL/gl.h>

#include <algorithm>
#include <cmath>

static const float pi = 3.14159265f;
// Half of the vertical angle of view is 20 degrees.
static const float half_angle_tangent = 0.36397f;

camera camera_of_frame(int n, const model& shown) {
  camera view;
  view.target = (shown.low + shown.high) * 0.5f;
  vec3 size = shown.high - shown.low;
  view.radius = 0.5f * std::sqrt(dot(size, size));
  view.distance = view.radius * 2.7f;
  view.azimuth = std::fmod(28.0f + 1.5f * static_cast<float>(n), 360.0f);
  view.elevation = 24.0f + 8.0f * std::sin(static_cast<float>(n) * pi / 60.0f);
  return view;
}

void orbit(camera* view, int dx, int dy) {
  view->azimuth = std::fmod(view->azimuth + 0.4f * static_cast<float>(dx), 360.0f);
  view->elevation = std::clamp(view->elevation + 0.4f * static_cast<float>(dy), -90.0f, 90.0f);
}

void pan(camera* view, int dx, int dy, int height) {
  float per_pixel = 2 * half_angle_tangent * view->distance / static_cast<float>(std::max(height, 1));
  float a = view->azimuth * pi / 180, e = view->elevation * pi / 180;
  vec3 right = {std::cos(a), -std::sin(a), 0};
  vec3 up = {std::sin(a) * std::sin(e), std::cos(a) * std::sin(e), std::cos(e)};
  view->target =
      view->target - right * (static_cast<float>(dx) * per_pixel) + up * (static_cast<float>(dy) * per_pixel);
}

void zoom(camera* view, int wheel) {
  float factor = std::pow(0.88f, static_cast<float>(wheel) / 120.0f);
  view->distance = std::clamp(view->distance * factor, view->radius * 0.05f, view->radius * 40.0f);
}

void apply_rotation(const camera& view) {
  glRotatef(view.elevation - 90, 1, 0, 0);
  glRotatef(view.azimuth, 0, 0, 1);
}

void apply_camera(const camera& view, int width, int height) {
  // The depth range holds the ground, which reaches further than the model.
  double nearest = std::max(view.distance - view.radius * 4, view.radius * 0.02f);
  double farthest = view.distance + view.radius * 6;
  double top = nearest * half_angle_tangent, side = top * width / std::max(height, 1);
  glMatrixMode(GL_PROJECTION);
  glLoadIdentity();
  glFrustum(-side, side, -top, top, nearest, farthest);
  glMatrixMode(GL_MODELVIEW);
  glLoadIdentity();
  glTranslatef(0, 0, -view.distance);
  apply_rotation(view);
  glTranslatef(-view.target.x, -view.target.y, -view.target.z);
}
