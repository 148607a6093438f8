#include "gl_entries.h"

namespace {

template <class Entry>
bool find_entry(const char* name, Entry* found, std::string* why) {
  *found = reinterpret_cast<Entry>(reinterpret_cast<void*>(wglGetProcAddress(name)));
  if (*found) return true;
  *why = std::string("OpenGL has no ") + name + " here";
  return false;
}

}  // namespace

namespace gl {
#define DEFINE_ENTRY(type, name) type name;
BUFFER_ENTRIES(DEFINE_ENTRY)
SHADER_ENTRIES(DEFINE_ENTRY)
#undef DEFINE_ENTRY
}  // namespace gl

#define FIND_ENTRY(type, name) \
  if (!find_entry(#name, &gl::name, why)) return false;

bool find_buffer_entries(std::string* why) {
  BUFFER_ENTRIES(FIND_ENTRY)
  return true;
}

bool find_shader_entries(std::string* why) {
  SHADER_ENTRIES(FIND_ENTRY)
  return true;
}

#undef FIND_ENTRY
