// The version of OpenGL that a process which is told less hears: not beyond what its functions can keep.
#pragma once

#include <windows.h>

#include <GL/gl.h>

struct version {
  int major, minor;
};

// The version that the host tells under the calling thread's context, which is current on it; 0.0 if it tells none.
version hosts_version();

// Whether `a` is a newer version than `b`.
bool is_newer(const version& a, const version& b);

// What stands for the host's answer to GL_MAJOR_VERSION or GL_MINOR_VERSION under the calling thread's context, which
// is current on the host.
GLint told_version_number(GLenum name, GLint hosts);

// The same for the host's text for GL_VERSION or GL_SHADING_LANGUAGE_VERSION. It lasts as long as the process.
const char* told_version_text(GLenum name, const char* hosts);
