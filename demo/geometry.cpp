#include "geometry.h"

#include <map>
#include <tuple>

namespace {

void add_faces(const model& shown, geometry* result) {
  for (const triangle& face : shown.triangles) {
    if (result->runs.empty() || result->runs.back().material != face.material) {
      result->runs.push_back({face.material, static_cast<int>(result->faces.size()), 0});
    }
    for (int i = 0; i < 3; ++i) result->faces.push_back({face.normals[i], face.corners[i]});
    result->runs.back().count += 3;
  }
}

void add_edges(const model& shown, geometry* result) {
  std::map<std::tuple<float, float, float>, uint32_t> numbers;
  auto number_of = [&](vec3 place) {
    const uint32_t next = static_cast<uint32_t>(numbers.size());
    const uint32_t number = numbers.try_emplace({place.x, place.y, place.z}, next).first->second;
    if (number == next) result->edge_places.push_back(place);
    return number;
  };
  for (const segment& edge : shown.edges) {
    result->edges.push_back(number_of(edge.from));
    result->edges.push_back(number_of(edge.to));
  }
}

void add_ground(vec3 middle, float step, int lines, geometry* result) {
  const vec3 strong = {0.36f, 0.40f, 0.46f}, weak = {0.23f, 0.26f, 0.31f};
  const float half = step * static_cast<float>(lines);
  for (int i = -lines; i <= lines; ++i) {
    const float along = step * static_cast<float>(i);
    const vec3 colour = i % 5 == 0 ? strong : weak;
    result->ground.push_back({colour, {middle.x + along, middle.y - half, middle.z}});
    result->ground.push_back({colour, {middle.x + along, middle.y + half, middle.z}});
    result->ground.push_back({colour, {middle.x - half, middle.y + along, middle.z}});
    result->ground.push_back({colour, {middle.x + half, middle.y + along, middle.z}});
  }
}

}  // namespace

geometry make_geometry(const model& shown, vec3 ground_middle, float grid_step, int grid_lines) {
  geometry result;
  add_faces(shown, &result);
  add_edges(shown, &result);
  add_ground(ground_middle, grid_step, grid_lines, &result);
  return result;
}
