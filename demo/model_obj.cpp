#define TINYOBJLOADER_IMPLEMENTATION
#include <tiny_obj_loader.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <sstream>

#include "model_files.h"

namespace {

// The loader takes a word that is no number for 0; here it is a fault of the file.
bool coordinates_are_numbers(const std::string& text, std::string* why) {
  std::istringstream lines(text);
  std::string line;
  for (int number = 1; std::getline(lines, line); ++number) {
    const bool position = line.rfind("v ", 0) == 0, normal = line.rfind("vn ", 0) == 0;
    if (!position && !normal) continue;
    const char* at = line.c_str() + (position ? 2 : 3);
    for (int i = 0; i < 3; ++i) {
      char* end;
      const double value = strtod(at, &end);
      if (end == at || !std::isfinite(value) || (*end && !strchr(" \t\r", *end))) {
        *why = "line " + std::to_string(number) + " does not have three coordinates";
        return false;
      }
      at = end;
    }
  }
  return true;
}

material material_of(const tinyobj::material_t& from) {
  material result = {};
  result.name = from.name;
  for (int i = 0; i < 3; ++i) {
    result.ambient[i] = static_cast<float>(from.ambient[i]);
    result.diffuse[i] = static_cast<float>(from.diffuse[i]);
    result.specular[i] = static_cast<float>(from.specular[i]);
  }
  result.ambient[3] = result.diffuse[3] = result.specular[3] = 1;
  result.shininess = std::clamp(static_cast<float>(from.shininess), 0.0f, 128.0f);
  return result;
}

// The n-th vector of a flat list, turned from y up to z up.
bool vector_at(const std::vector<tinyobj::real_t>& values, int n, vec3* result) {
  if (n < 0 || static_cast<size_t>(n) * 3 + 2 >= values.size()) return false;
  const tinyobj::real_t* at = &values[static_cast<size_t>(n) * 3];
  *result = {static_cast<float>(at[0]), static_cast<float>(-at[2]), static_cast<float>(at[1])};
  return true;
}

bool add_mesh(const tinyobj::attrib_t& attributes, const tinyobj::mesh_t& mesh, int plain, model* result,
              std::string* why) {
  for (size_t face = 0; face * 3 + 2 < mesh.indices.size(); ++face) {
    triangle added = {};
    const int chosen = mesh.material_ids[face];
    added.material = chosen >= 0 && chosen < plain ? chosen : plain;
    bool has_normals = true;
    for (size_t i = 0; i < 3; ++i) {
      const tinyobj::index_t& index = mesh.indices[face * 3 + i];
      if (!vector_at(attributes.vertices, index.vertex_index, &added.corners[i])) {
        *why = "a face names a vertex that the file does not have";
        return false;
      }
      has_normals = has_normals && vector_at(attributes.normals, index.normal_index, &added.normals[i]);
    }
    if (!has_normals) std::fill(added.normals, added.normals + 3, vec3{0, 0, 0});
    result->triangles.push_back(added);
  }
  return true;
}

}  // namespace

bool read_obj(const std::string& path, model* result, std::string* why) {
  std::string text;
  if (!read_file(path, &text, why) || !coordinates_are_numbers(text, why)) return false;

  tinyobj::attrib_t attributes;
  std::vector<tinyobj::shape_t> shapes;
  std::vector<tinyobj::material_t> materials;
  std::string warnings, errors;
  const size_t folder_end = path.find_last_of("/\\");
  tinyobj::MaterialFileReader material_files(folder_end == std::string::npos ? "" : path.substr(0, folder_end + 1));
  std::istringstream stream(text);
  if (!tinyobj::LoadObj(&attributes, &shapes, &materials, &warnings, &errors, &stream, &material_files)) {
    *why = "is malformed: " + errors.substr(0, errors.find('\n'));
    return false;
  }

  for (const tinyobj::material_t& from : materials) result->materials.push_back(material_of(from));
  // For faces without a material, and those whose material file is missing.
  const int plain = static_cast<int>(materials.size());
  for (const tinyobj::shape_t& shape : shapes) {
    if (!add_mesh(attributes, shape.mesh, plain, result, why)) return false;
  }
  const auto is_plain = [&](const triangle& face) { return face.material == plain; };
  if (std::any_of(result->triangles.begin(), result->triangles.end(), is_plain)) {
    result->materials.push_back(plain_material("(none)"));
  }
  return true;
}
