#include "told_version.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "extension_names.h"
#include "host.h"
#include "lasting_string.h"

namespace {

struct told_versions {
  version gl, language;
};

// The newest version all of whose functions are ops; tests/system/check_names.py holds that it is.
constexpr told_versions newest = {{3, 1}, {1, 40}};
// What is told in its place where nothing says that 3.1 has the fixed functions too, which that version may lack.
constexpr told_versions newest_with_fixed_functions = {{3, 0}, {1, 30}};

const told_versions& current_limits() {
  return has_extension("GL_ARB_compatibility") ? newest : newest_with_fixed_functions;
}

// Reads the numbers at the head of a text, and gives where they end. Null for a text that begins otherwise.
const char* read_version(const char* text, version* read) {
  int length = 0;
  if (sscanf(text, "%d.%d%n", &read->major, &read->minor, &length) != 2) return nullptr;
  return text + length + strspn(text + length, ".0123456789");
}

// A minor version of the shading language has two digits.
char* write_version(const version& told, int digits, const char* rest) {
  const size_t size = strlen(rest) + 16;
  auto* text = static_cast<char*>(malloc(size));
  if (text) snprintf(text, size, "%d.%0*d%s", told.major, digits, told.minor, rest);
  return text;
}

}  // namespace

version hosts_version() {
  version read{};
  const auto* text = reinterpret_cast<const char*>(host_gl_entry<glGetString_op>()(GL_VERSION));
  return text && read_version(text, &read) ? read : version{};
}

bool is_newer(const version& a, const version& b) {
  return a.major != b.major ? a.major > b.major : a.minor > b.minor;
}

GLint told_version_number(GLenum name, GLint hosts) {
  const version& limit = current_limits().gl;
  if (!is_newer(hosts_version(), limit)) return hosts;
  return name == GL_MAJOR_VERSION ? limit.major : limit.minor;
}

const char* told_version_text(GLenum name, const char* hosts) {
  version read;
  const char* rest = hosts ? read_version(hosts, &read) : nullptr;
  if (!rest) return hosts;
  const told_versions& limits = current_limits();
  const bool is_language = name == GL_SHADING_LANGUAGE_VERSION;
  const version& limit = is_language ? limits.language : limits.gl;
  if (!is_newer(read, limit)) return hosts;
  return lasting_string(write_version(limit, is_language ? 2 : 1, rest));
}
