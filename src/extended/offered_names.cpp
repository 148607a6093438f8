#include "extended/offered_names.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "extended/lasting_text.h"

namespace {

// All functions of these are ops of the basic mode.
constexpr std::string_view basic_extensions[] = {
#include "ops/extension_names.inc"
};
static_assert(std::ranges::is_sorted(basic_extensions));

struct wide_extension {
  std::string_view name;
  bool is_whole;
};

template <class... Ops>
constexpr bool have_handlers = (has_handlers<Ops> && ...);

#define WIDE_EXTENSION(name, ...) {name, have_handlers<__VA_ARGS__>},
constexpr wide_extension wide_extensions[] = {
#include "ops/wide_extensions.inc"
};
#undef WIDE_EXTENSION
static_assert(std::ranges::is_sorted(wide_extensions, {}, &wide_extension::name));

bool is_whole_extension(std::string_view name) {
  const auto* found = std::ranges::lower_bound(wide_extensions, name, {}, &wide_extension::name);
  return found != std::end(wide_extensions) && found->name == name && found->is_whole;
}

// Copies all of `from` but what is withheld. There is room for all.
void copy_offered_names(const char* from, char* to) {
  while (*from) {
    const size_t length = strcspn(from, " ");
    const char* next = from + length + strspn(from + length, " ");
    if (is_offered(from, length)) {
      memcpy(to, from, static_cast<size_t>(next - from));
      to += next - from;
    }
    from = next;
  }
  *to = 0;
}

const char* system_name(const __osw_thread_state* state, GLuint index) {
  auto* ask = sys_gl<glGetStringi_op>(state);
  return ask ? reinterpret_cast<const char*>(ask(GL_EXTENSIONS, index)) : nullptr;
}

bool is_withheld_at(const __osw_thread_state* state, GLuint index) {
  const char* name = system_name(state, index);
  return name && !is_offered(name, strlen(name));
}

}  // namespace

bool is_offered(const char* name, size_t length) {
  const std::string_view wanted(name, length);
  return std::ranges::binary_search(basic_extensions, wanted) || is_whole_extension(wanted);
}

const char* offered_names(const char* names) {
  if (!names) return nullptr;
  auto* offered = static_cast<char*>(calloc(strlen(names) + 1, 1));
  if (offered) copy_offered_names(names, offered);
  return lasting_text(offered);
}

GLint withheld_name_count(const __osw_thread_state* state) {
  GLint count = 0;
  sys_gl<glGetIntegerv_op>(state)(GL_NUM_EXTENSIONS, &count);
  GLint withheld = 0;
  for (GLint i = 0; i < count; ++i) withheld += is_withheld_at(state, static_cast<GLuint>(i));
  return withheld;
}

// The system is asked for no number beyond its last, which would be an error in the program's context.
GLuint system_name_index(const __osw_thread_state* state, GLuint index) {
  GLint count = 0;
  sys_gl<glGetIntegerv_op>(state)(GL_NUM_EXTENSIONS, &count);
  GLuint offered = 0;
  for (GLint i = 0; i < count; ++i) {
    const auto at = static_cast<GLuint>(i);
    if (is_withheld_at(state, at)) continue;
    if (offered == index) return at;
    ++offered;
  }
  return std::max(index, static_cast<GLuint>(count));
}
