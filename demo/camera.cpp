#include "camera.h"

#include <windows.h>
// GL's header needs the one above.
#include <GL/gl.h>

#include <algorithm>
#include <cmath>

namespace {

constexpr float pi = 3.14159265f;
// Half of the vertical angle of view is 20 degrees.
constexpr float half_angle_tangent = 0.36397f;

}  // namespace

camera camera_of_frame(int n, const model& shown) {
  camera view;
  view.target = (shown.low + shown.high) * 0.5f;
  const vec3 size = shown.high - shown.low;
  view.radius = 0.5f * sqrtf(dot(size, size));
  view.distance = view.radius * 2.7f;
  view.azimuth = fmodf(28.0f + 1.5f * static_cast<float>(n), 360.0f);
  view.elevation = 24.0f + 8.0f * sinf(static_cast<float>(n) * pi / 60.0f);
  return view;
}

void orbit(camera* view, int dx, int dy) {
  view->azimuth = fmodf(view->azimuth + 0.4f * static_cast<float>(dx), 360.0f);
  view->elevation = std::clamp(view->elevation + 0.4f * static_cast<float>(dy), -90.0f, 90.0f);
}

void pan(camera* view, int dx, int dy, int height) {
  const float per_pixel = 2 * half_angle_tangent * view->distance / static_cast<float>(std::max(height, 1));
  const float a = view->azimuth * pi / 180, e = view->elevation * pi / 180;
  const vec3 right = {cosf(a), -sinf(a), 0};
  const vec3 up = {sinf(a) * sinf(e), cosf(a) * sinf(e), cosf(e)};
  view->target =
      view->target - right * (static_cast<float>(dx) * per_pixel) + up * (static_cast<float>(dy) * per_pixel);
}

void zoom(camera* view, int wheel) {
  const float factor = powf(0.88f, static_cast<float>(wheel) / 120.0f);
  view->distance = std::clamp(view->distance * factor, view->radius * 0.05f, view->radius * 40.0f);
}

void apply_rotation(const camera& view) {
  glRotatef(view.elevation - 90, 1, 0, 0);
  glRotatef(view.azimuth, 0, 0, 1);
}

void apply_camera(const camera& view, int width, int height) {
  // The depth range holds the ground, which reaches further than the model.
  const double nearest = std::max(view.distance - view.radius * 4, view.radius * 0.02f);
  const double farthest = view.distance + view.radius * 6;
  const double top = nearest * half_angle_tangent, side = top * width / std::max(height, 1);
  glMatrixMode(GL_PROJECTION);
  glLoadIdentity();
  glFrustum(-side, side, -top, top, nearest, farthest);
  glMatrixMode(GL_MODELVIEW);
  glLoadIdentity();
  glTranslatef(0, 0, -view.distance);
  apply_rotation(view);
  glTranslatef(-view.target.x, -view.target.y, -view.target.z);
}
