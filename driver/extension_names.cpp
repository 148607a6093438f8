#include "extension_names.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "host.h"
#include "lasting_string.h"
#include "spread_process.h"

namespace {

constexpr std::string_view offered_names[] = {
#include "ops/extension_names.inc"
};
static_assert(std::ranges::is_sorted(offered_names));

bool is_withheld(std::string_view name) {
  return !std::ranges::binary_search(offered_names, name);
}

// Takes the first of names that are separated by blanks. Result: where the next one begins.
const char* take_name(const char* names, std::string_view* name) {
  *name = {names, strcspn(names, " ")};
  names += name->size();
  return names + strspn(names, " ");
}

// Copies all of `from` but what is withheld. There is room for all.
void copy_offered(const char* from, char* to) {
  while (*from != 0) {
    std::string_view name;
    const char* next = take_name(from, &name);
    if (!is_withheld(name)) {
      memcpy(to, from, static_cast<size_t>(next - from));
      to += next - from;
    }
    from = next;
  }
  *to = 0;
}

const char* indexed_extension(GLuint index) {
  return reinterpret_cast<const char*>(host_gl_entry<glGetStringi_op>()(GL_EXTENSIONS, index));
}

bool is_withheld_at(GLuint index) {
  const char* name = indexed_extension(index);
  return name && is_withheld(name);
}

}  // namespace

const char* offered_extensions(const char* extensions) {
  if (!extensions || !is_told_less()) return extensions;
  auto* offered = static_cast<char*>(malloc(strlen(extensions) + 1));
  if (offered) copy_offered(extensions, offered);
  return lasting_string(offered);
}

bool has_extension(const char* name) {
  const auto* names = reinterpret_cast<const char*>(host_gl_entry<glGetString_op>()(GL_EXTENSIONS));
  while (names && *names != 0) {
    std::string_view found;
    names = take_name(names, &found);
    if (found == name) return true;
  }
  return false;
}

int withheld_extension_count(context* c) {
  if (!is_told_less()) return 0;
  if (c->withheld_extensions >= 0) return c->withheld_extensions;
  c->withheld_extensions = 0;
  GLint count = 0;
  host_gl_entry<glGetIntegerv_op>()(GL_NUM_EXTENSIONS, &count);
  if (!host_has<glGetStringi_op>()) return 0;
  for (GLint i = 0; i < count; ++i) c->withheld_extensions += is_withheld_at(static_cast<GLuint>(i));
  return c->withheld_extensions;
}

GLuint host_extension_index(GLuint index) {
  if (!is_told_less()) return index;
  GLuint at = 0;
  for (;; ++at) {
    if (is_withheld_at(at)) continue;
    if (index-- == 0 || !indexed_extension(at)) return at;
  }
}
