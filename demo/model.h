// The model that the viewer shows: triangles by material, in a space whose z points up.
#pragma once

#include <string>
#include <vector>

struct vec3 {
  float x, y, z;
};

vec3 operator+(vec3 a, vec3 b);
vec3 operator-(vec3 a, vec3 b);
vec3 operator*(vec3 a, float factor);
float dot(vec3 a, vec3 b);
vec3 cross(vec3 a, vec3 b);
// The vector of length 1 in a's direction; up if a has no direction.
vec3 unit(vec3 a);

struct material {
  std::string name;
  float ambient[4];
  float diffuse[4];
  float specular[4];
  float shininess;  // 0 to 128
};

struct triangle {
  vec3 corners[3];
  vec3 normals[3];  // all zero if the file has none; complete_normals fills them
  int material;     // index into model::materials
};

struct segment {
  vec3 from, to;
};

struct model {
  std::string name;  // the file's name without its folder
  std::vector<material> materials;
  std::vector<triangle> triangles;  // sorted by material
  std::vector<segment> edges;       // where the surface ends or bends sharply
  vec3 low, high;                   // the smallest box that holds all corners
};

// A material in the usual grey of a part without one.
material plain_material(const std::string& name);
