// The public registry of OpenGL: which functions belong to an extension or to a version.
#pragma once

#include <map>
#include <string>
#include <vector>

struct registry {
  std::map<std::string, std::vector<std::string>> extensions;  // of GL and WGL, by name
  std::map<std::string, std::vector<std::string>> versions;    // what each adds to the one before, by number: "3.1"
};

// Reads gl.xml and wgl.xml of a folder. A file that tells nothing counts as a failed check.
registry read_registry(const std::string& folder);
