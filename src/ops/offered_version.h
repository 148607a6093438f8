// The version of OpenGL that the extended mode offers to programs.
#pragma once

struct offered_version {
  int major, minor;
  int language;  // of the shading language, major * 100 + minor
  int last_op;   // of its functions and those of the versions before it
};

// The newest version all of whose functions are ops with handlers. A program that trusts a version calls each of them.
const offered_version& newest_offered_version();
