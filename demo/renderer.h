// The ways in which the viewer hands its geometry to GL, from the first version of OpenGL to programs for the
// graphics processor.
#pragma once

#include <string>

#include "geometry.h"

// Programs in GLSL, with the locations of their uniforms.
struct face_program {
  unsigned program;
  int ambient, diffuse, specular, shininess;
};

struct line_program {
  unsigned program;
  int tint;
};

// What a renderer keeps from picture to picture. Each uses some of it.
struct drawing {
  const model* shown;
  geometry shapes;
  unsigned ground_list, faces_list, edges_list;
  unsigned ground_buffer, faces_buffer, edge_places_buffer, edges_buffer;  // 0: the application's memory
  face_program for_faces;
  line_program for_lines;
};

struct renderer {
  const char* name;
  // Makes what the pictures need of drawing's shapes. Like all of these it needs a current context. On failure the
  // result is false, and `*why` says in one line what GL does not have.
  bool (*prepare)(drawing* self, std::string* why);
  // Each draws with the matrices and the lights that are set, the edges in one dark colour.
  void (*draw_ground)(const drawing& self);
  void (*draw_faces)(const drawing& self);
  void (*draw_edges)(const drawing& self);
};

extern const renderer lists_renderer;    // display lists
extern const renderer arrays_renderer;   // vertex arrays in the application's memory
extern const renderer buffers_renderer;  // the same in buffer objects
extern const renderer shaders_renderer;  // buffer objects and programs in GLSL

const renderer* const renderers[] = {&lists_renderer, &arrays_renderer, &buffers_renderer, &shaders_renderer};

// The renderer of this name, or null.
const renderer* find_renderer(const std::string& name);

// Sets GL's material.
void set_material(const material& of);

constexpr vec3 edge_colour = {0.05f, 0.06f, 0.08f};
