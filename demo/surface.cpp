#include "surface.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <map>
#include <tuple>

namespace {

// The cosine of 40 degrees: below it a bend is sharp. Mechanical parts show their edges, round ones look smooth.
constexpr float crease_cosine = 0.766f;

// Corners at the same place, numbered: files repeat positions, STL always does.
struct welded {
  std::vector<uint32_t> places;                  // for each corner of each triangle, its place
  std::vector<std::vector<uint32_t>> triangles;  // for each place, the triangles that touch it
  std::vector<vec3> face_normals;                // for each triangle; zero if it has no area
};

welded weld(const std::vector<triangle>& triangles) {
  welded result;
  std::map<std::tuple<float, float, float>, uint32_t> numbers;
  for (uint32_t i = 0; i < triangles.size(); ++i) {
    const vec3* corners = triangles[i].corners;
    const vec3 across = cross(corners[1] - corners[0], corners[2] - corners[0]);
    result.face_normals.push_back(dot(across, across) > 0 ? unit(across) : vec3{0, 0, 0});
    for (int corner = 0; corner < 3; ++corner) {
      const vec3 at = corners[corner];
      const uint32_t next = static_cast<uint32_t>(numbers.size());
      const uint32_t place = numbers.try_emplace({at.x, at.y, at.z}, next).first->second;
      if (place == next) result.triangles.emplace_back();
      result.places.push_back(place);
      result.triangles[place].push_back(i);
    }
  }
  return result;
}

void complete_normals(const welded& places, std::vector<triangle>* triangles) {
  for (uint32_t i = 0; i < triangles->size(); ++i) {
    triangle& face = (*triangles)[i];
    for (int corner = 0; corner < 3; ++corner) {
      vec3& normal = face.normals[corner];
      if (dot(normal, normal) > 0) continue;
      vec3 sum = {0, 0, 0};
      for (uint32_t other : places.triangles[places.places[i * 3 + corner]]) {
        const vec3 candidate = places.face_normals[other];
        if (dot(candidate, places.face_normals[i]) >= crease_cosine) sum = sum + candidate;
      }
      normal = unit(sum);
    }
  }
}

void find_edges(const welded& places, model* shown) {
  // The triangles at each edge, by its two places, the lower first.
  std::map<std::pair<uint32_t, uint32_t>, std::vector<uint32_t>> touching;
  for (uint32_t i = 0; i < shown->triangles.size(); ++i) {
    for (int corner = 0; corner < 3; ++corner) {
      const uint32_t a = places.places[i * 3 + corner], b = places.places[i * 3 + (corner + 1) % 3];
      if (a != b) touching[std::minmax(a, b)].push_back(i);
    }
  }
  std::vector<vec3> positions(places.triangles.size());
  for (size_t i = 0; i < places.places.size(); ++i) {
    positions[places.places[i]] = shown->triangles[i / 3].corners[i % 3];
  }
  for (const auto& [ends, faces] : touching) {
    bool smooth =
        faces.size() == 2 && dot(places.face_normals[faces[0]], places.face_normals[faces[1]]) >= crease_cosine;
    if (!smooth) shown->edges.push_back({positions[ends.first], positions[ends.second]});
  }
}

}  // namespace

void complete_surface(model* shown) {
  welded places = weld(shown->triangles);
  complete_normals(places, &shown->triangles);
  find_edges(places, shown);
}
