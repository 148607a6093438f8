// The GL functions that opengl32.dll does not export and a program asks for by name.
#pragma once

#include <windows.h>
// GL's headers need the one above.
#include <GL/gl.h>
#include <GL/glext.h>

#include <string>

// clang-format off
#define BUFFER_ENTRIES(ENTRY)                  \
  ENTRY(PFNGLGENBUFFERSPROC, glGenBuffers)     \
  ENTRY(PFNGLBINDBUFFERPROC, glBindBuffer)     \
  ENTRY(PFNGLBUFFERDATAPROC, glBufferData)

#define SHADER_ENTRIES(ENTRY)                                                \
  ENTRY(PFNGLCREATESHADERPROC, glCreateShader)                               \
  ENTRY(PFNGLSHADERSOURCEPROC, glShaderSource)                               \
  ENTRY(PFNGLCOMPILESHADERPROC, glCompileShader)                             \
  ENTRY(PFNGLGETSHADERIVPROC, glGetShaderiv)                                 \
  ENTRY(PFNGLGETSHADERINFOLOGPROC, glGetShaderInfoLog)                       \
  ENTRY(PFNGLCREATEPROGRAMPROC, glCreateProgram)                             \
  ENTRY(PFNGLATTACHSHADERPROC, glAttachShader)                               \
  ENTRY(PFNGLBINDATTRIBLOCATIONPROC, glBindAttribLocation)                   \
  ENTRY(PFNGLLINKPROGRAMPROC, glLinkProgram)                                 \
  ENTRY(PFNGLGETPROGRAMIVPROC, glGetProgramiv)                               \
  ENTRY(PFNGLGETPROGRAMINFOLOGPROC, glGetProgramInfoLog)                     \
  ENTRY(PFNGLUSEPROGRAMPROC, glUseProgram)                                   \
  ENTRY(PFNGLGETUNIFORMLOCATIONPROC, glGetUniformLocation)                   \
  ENTRY(PFNGLUNIFORM1FPROC, glUniform1f)                                     \
  ENTRY(PFNGLUNIFORM4FVPROC, glUniform4fv)                                   \
  ENTRY(PFNGLENABLEVERTEXATTRIBARRAYPROC, glEnableVertexAttribArray)         \
  ENTRY(PFNGLDISABLEVERTEXATTRIBARRAYPROC, glDisableVertexAttribArray)       \
  ENTRY(PFNGLVERTEXATTRIBPOINTERPROC, glVertexAttribPointer)
// clang-format on

// Each under its own name, null until it has been found.
#define DECLARE_ENTRY(type, name) extern type name;
namespace gl {
BUFFER_ENTRIES(DECLARE_ENTRY)
SHADER_ENTRIES(DECLARE_ENTRY)
}  // namespace gl
#undef DECLARE_ENTRY

// Look the entries up, which needs a current context. The result is false, with a line in `*why`, if one is missing.
bool find_buffer_entries(std::string* why);
bool find_shader_entries(std::string* why);
