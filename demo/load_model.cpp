#include "load_model.h"

#include <algorithm>
#include <cctype>
#include <cmath>

#include "model_files.h"
#include "surface.h"

namespace {

std::string ending(const std::string& path) {
  const size_t dot_at = path.find_last_of('.');
  std::string result = dot_at == std::string::npos ? "" : path.substr(dot_at);
  for (char& letter : result) letter = static_cast<char>(tolower(static_cast<unsigned char>(letter)));
  return result;
}

bool find_box(model* result, std::string* why) {
  result->low = result->high = result->triangles[0].corners[0];
  for (const triangle& face : result->triangles) {
    for (vec3 corner : face.corners) {
      // A sum with one value that is not a number, or too large, is neither.
      if (!std::isfinite(corner.x + corner.y + corner.z)) {
        *why = "has a corner whose coordinates are no numbers";
        return false;
      }
      result->low = {std::min(result->low.x, corner.x), std::min(result->low.y, corner.y),
                     std::min(result->low.z, corner.z)};
      result->high = {std::max(result->high.x, corner.x), std::max(result->high.y, corner.y),
                      std::max(result->high.z, corner.z)};
    }
  }
  const vec3 size = result->high - result->low;
  if (!(dot(size, size) > 0) || !std::isfinite(dot(size, size))) {
    *why = "has no extent that could be shown";
    return false;
  }
  return true;
}

}  // namespace

bool load_model(const std::string& path, model* result, std::string* why) {
  *result = model();
  const size_t folder_end = path.find_last_of("/\\");
  result->name = folder_end == std::string::npos ? path : path.substr(folder_end + 1);

  std::string kind = ending(path);
  if (kind == ".obj") {
    if (!read_obj(path, result, why)) return false;
  } else if (kind == ".stl") {
    if (!read_stl(path, result, why)) return false;
  } else {
    *why = "is neither an .obj nor an .stl file";
    return false;
  }
  if (result->triangles.empty()) {
    *why = "has no triangles";
    return false;
  }
  if (!find_box(result, why)) return false;

  std::stable_sort(result->triangles.begin(), result->triangles.end(),
                   [](const triangle& a, const triangle& b) { return a.material < b.material; });
  complete_surface(result);
  return true;
}
