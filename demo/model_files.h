// The readers of the file formats. Each fills name-independent parts of the model: materials and triangles, the latter
// in any order, with z up. On failure the result is false and `*why` says in one line what is wrong.
#pragma once

#include <string>

#include "model.h"

bool read_obj(const std::string& path, model* result, std::string* why);
bool read_stl(const std::string& path, model* result, std::string* why);

// The whole of a file. False, with `*why` set, if it cannot be read.
bool read_file(const std::string& path, std::string* bytes, std::string* why);
