#include "model.h"

#include <cmath>

vec3 operator+(vec3 a, vec3 b) {
  return {a.x + b.x, a.y + b.y, a.z + b.z};
}
vec3 operator-(vec3 a, vec3 b) {
  return {a.x - b.x, a.y - b.y, a.z - b.z};
}
vec3 operator*(vec3 a, float factor) {
  return {a.x * factor, a.y * factor, a.z * factor};
}
float dot(vec3 a, vec3 b) {
  return a.x * b.x + a.y * b.y + a.z * b.z;
}
vec3 cross(vec3 a, vec3 b) {
  return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

vec3 unit(vec3 a) {
  const float length = sqrtf(dot(a, a));
  return length > 0 ? a * (1 / length) : vec3{0, 0, 1};
}

material plain_material(const std::string& name) {
  return {name, {0.16f, 0.16f, 0.17f, 1}, {0.62f, 0.64f, 0.68f, 1}, {0.25f, 0.25f, 0.25f, 1}, 24};
}
