#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "model_files.h"

namespace {

// Binary: 80 bytes of anything, the number of triangles, and for each its normal, three corners and two spare bytes.
constexpr size_t binary_head = 84;
constexpr size_t binary_triangle = 50;

uint32_t binary_count(const std::string& bytes) {
  uint32_t count = 0;
  if (bytes.size() >= binary_head) memcpy(&count, bytes.data() + 80, sizeof count);
  return count;
}

void read_binary(const std::string& bytes, model* result) {
  const uint32_t count = binary_count(bytes);
  result->triangles.resize(count, triangle());
  for (uint32_t i = 0; i < count; ++i) {
    const char* at = bytes.data() + binary_head + i * binary_triangle + sizeof(vec3);
    memcpy(result->triangles[i].corners, at, 3 * sizeof(vec3));
  }
}

// The next word of a text, in `*word`; false at its end.
bool next_word(const char** at, std::string* word) {
  while (**at && strchr(" \t\r\n", **at)) ++*at;
  const char* start = *at;
  while (**at && !strchr(" \t\r\n", **at)) ++*at;
  word->assign(start, *at);
  return !word->empty();
}

bool next_coordinate(const char** at, float* value) {
  std::string word;
  if (!next_word(at, &word)) return false;
  char* end;
  *value = strtof(word.c_str(), &end);
  return !*end;
}

// Text: "facet normal x y z outer loop", three times "vertex x y z", "endloop endfacet". The normals are not used.
bool read_text(const std::string& text, model* result, std::string* why) {
  const char* at = text.c_str();
  std::string word;
  triangle added = {};
  int corner = 0;
  while (next_word(&at, &word)) {
    if (word == "solid" || word == "endsolid") {
      // The name may hold any word.
      at += strcspn(at, "\n");
    } else if (word == "facet") {
      corner = 0;
    } else if (word == "vertex") {
      vec3 read = {};
      if (corner > 2 || !next_coordinate(&at, &read.x) || !next_coordinate(&at, &read.y) ||
          !next_coordinate(&at, &read.z)) {
        *why = "has a malformed vertex in triangle " + std::to_string(result->triangles.size() + 1);
        return false;
      }
      added.corners[corner++] = read;
    } else if (word == "endfacet") {
      if (corner != 3) {
        *why = "triangle " + std::to_string(result->triangles.size() + 1) + " does not have three corners";
        return false;
      }
      result->triangles.push_back(added);
    }
  }
  return true;
}

}  // namespace

bool read_stl(const std::string& path, model* result, std::string* why) {
  std::string bytes;
  if (!read_file(path, &bytes, why)) return false;
  result->materials.push_back(plain_material("STL"));
  // Many binary files begin with the word "solid", so the size decides.
  if (bytes.size() >= binary_head && bytes.size() == binary_head + binary_count(bytes) * binary_triangle) {
    read_binary(bytes, result);
    return true;
  }
  if (bytes.rfind("solid", 0) == 0) return read_text(bytes, result, why);
  *why = "is neither a text STL file nor a binary one of the size that its triangle count asks for";
  return false;
}
