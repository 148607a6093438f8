#include "wgl/context_profile.h"

#include <cstdio>
#include <cstring>

namespace {

// Before 3.2 there are no profiles, and nothing may be asked: the program would find the error. With 3.1 the fixed
// functions are an extension.
constexpr int version_with_profiles = 302;
constexpr int version_without_fixed_functions = 301;

// Major version times 100 plus minor; 0 for a text that begins otherwise.
int version_of(const __osw_thread_state* state) {
  const auto* text = reinterpret_cast<const char*>(sys_gl<glGetString_op>(state)(GL_VERSION));
  int major = 0;
  int minor = 0;
  return text && sscanf(text, "%d.%d", &major, &minor) == 2 ? major * 100 + minor : 0;
}

bool has_core_bit(const __osw_thread_state* state) {
  GLint profile = 0;
  sys_gl<glGetIntegerv_op>(state)(GL_CONTEXT_PROFILE_MASK, &profile);
  return (profile & GL_CONTEXT_CORE_PROFILE_BIT) != 0;
}

bool lacks_fixed_functions(const __osw_thread_state* state) {
  GLint count = 0;
  sys_gl<glGetIntegerv_op>(state)(GL_NUM_EXTENSIONS, &count);
  for (GLint i = 0; i < count; ++i) {
    const auto* name =
        reinterpret_cast<const char*>(sys_gl<glGetStringi_op>(state)(GL_EXTENSIONS, static_cast<GLuint>(i)));
    if (name && strcmp(name, "GL_ARB_compatibility") == 0) return false;
  }
  return true;
}

}  // namespace

void note_profile(const __osw_thread_state* state, __osw_glrc* glrc) {
  if (!glrc->profile_unknown) return;
  glrc->profile_unknown = 0;
  const int version = version_of(state);
  if (version >= version_with_profiles) {
    glrc->is_core = has_core_bit(state);
  } else if (version == version_without_fixed_functions) {
    glrc->is_core = lacks_fixed_functions(state);
  }
}
