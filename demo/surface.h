// What a file does not say about a surface: smooth normals and sharp edges.
#pragma once

#include "model.h"

// Fills the normals of triangles that have none, smooth over bends below the crease angle, and finds the edges: where
// only one triangle ends, or where two meet at more than that angle.
void complete_surface(model* shown);
