// The model from its file.
#pragma once

#include "model.h"

// Reads a Wavefront OBJ file (ending .obj) or an STL file (ending .stl, binary or text) into `*result`, with normals,
// edges and box computed. OBJ files have y up and are turned; STL files have z up. On failure the result is false,
// `*why` says in one line what is wrong, without the file's name, and `*result` is not to be used.
bool load_model(const std::string& path, model* result, std::string* why);
