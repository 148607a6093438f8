// What a renderer gets to draw: the model and its ground as flat lists of vertices.
#pragma once

#include <cstdint>
#include <vector>

#include "model.h"

struct face_vertex {
  vec3 normal, place;
};

struct ground_vertex {
  vec3 colour, place;
};

// Vertices of one material, which follow each other.
struct material_run {
  int material;  // index into model::materials
  int first, count;
};

struct geometry {
  std::vector<face_vertex> faces;     // three for each triangle
  std::vector<material_run> runs;     // of the faces
  std::vector<vec3> edge_places;      // each once
  std::vector<uint32_t> edges;        // two for each edge, indices into edge_places
  std::vector<ground_vertex> ground;  // two for each line
};

// The geometry of a model, whose ground has lines at this distance to each side of its middle.
geometry make_geometry(const model& shown, vec3 ground_middle, float grid_step, int grid_lines);
