#include "extension_names.h"

#include <cstdlib>
#include <cstring>

#include "binding.h"
#include "host.h"
#include "own_ops.h"
#include "stand_in.h"

namespace {

// A program that finds the first of these creates its contexts in a way that cannot be spanned; the others stand on it.
const char* const withheld[] = {"WGL_ARB_create_context", "WGL_ARB_create_context_profile",
                                "WGL_ARB_create_context_no_error", "WGL_ARB_create_context_robustness"};

bool is_withheld(const char* name, size_t length) {
  for (const char* candidate : withheld) {
    if (strlen(candidate) == length && memcmp(candidate, name, length) == 0) return true;
  }
  return false;
}

// Copies all of `from` but what is withheld, if `to` is not null. Returns whether anything is.
bool copy_offered(const char* from, char* to) {
  bool withholds = false;
  while (*from != 0) {
    const size_t length = strcspn(from, " ");
    const size_t blanks = strspn(from + length, " ");
    if (is_withheld(from, length)) {
      withholds = true;
    } else if (to) {
      memcpy(to, from, length + blanks);
      to += length + blanks;
    }
    from += length + blanks;
  }
  if (to) *to = 0;
  return withholds;
}

struct offered_string {
  offered_string* next;
  char* from;
  char* offered;
};

SRWLOCK offered_lock = SRWLOCK_INIT;
offered_string* offered_strings;

const char* find_or_make_offered(const char* extensions) {
  for (offered_string* s = offered_strings; s; s = s->next) {
    if (strcmp(s->from, extensions) == 0) return s->offered;
  }
  auto* made = static_cast<offered_string*>(calloc(1, sizeof(offered_string)));
  if (!made) return "";
  made->from = _strdup(extensions);
  made->offered = _strdup(extensions);
  if (!made->from || !made->offered) return "";
  copy_offered(extensions, made->offered);
  made->next = offered_strings;
  offered_strings = made;
  return made->offered;
}

const char* indexed_extension(GLuint index) {
  return reinterpret_cast<const char*>(host_gl_entry<glGetStringi_op>()(GL_EXTENSIONS, index));
}

bool is_withheld_at(GLuint index) {
  const char* name = indexed_extension(index);
  return name && is_withheld(name, strlen(name));
}

// The host's index of an offered name.
GLuint host_index(GLuint index) {
  GLuint at = 0;
  for (;; ++at) {
    if (is_withheld_at(at)) continue;
    if (index-- == 0 || !indexed_extension(at)) return at;
  }
}

}  // namespace

const char* offered_extensions(const char* extensions) {
  if (!extensions || !copy_offered(extensions, nullptr)) return extensions;
  AcquireSRWLockExclusive(&offered_lock);
  const char* offered = find_or_make_offered(extensions);
  ReleaseSRWLockExclusive(&offered_lock);
  return offered;
}

int withheld_extension_count(context* c) {
  if (c->withheld_extensions >= 0) return c->withheld_extensions;
  c->withheld_extensions = 0;
  GLint count = 0;
  host_gl_entry<glGetIntegerv_op>()(GL_NUM_EXTENSIONS, &count);
  if (!host_has<glGetStringi_op>()) return 0;
  for (GLint i = 0; i < count; ++i) c->withheld_extensions += is_withheld_at(static_cast<GLuint>(i));
  return c->withheld_extensions;
}

const GLubyte* own_call<glGetString_op>::call(GLenum name) {
  bind_current();
  const GLubyte* string = host_gl_entry<glGetString_op>()(name);
  if (name != GL_EXTENSIONS) return string;
  return reinterpret_cast<const GLubyte*>(offered_extensions(reinterpret_cast<const char*>(string)));
}

const GLubyte* own_call<glGetStringi_op>::call(GLenum name, GLuint index) {
  context* c = calling_context();
  if (c && name == GL_EXTENSIONS && withheld_extension_count(c) > 0) index = host_index(index);
  return host_gl_entry<glGetStringi_op>()(name, index);
}

const char* own_call<wglGetExtensionsStringARB_op>::call(HDC hdc) {
  load_host();
  return offered_extensions(host_wgl_entry<wglGetExtensionsStringARB_op>()(host_hdc(hdc)));
}

const char* own_call<wglGetExtensionsStringEXT_op>::call() {
  bind_current();
  return offered_extensions(host_wgl_entry<wglGetExtensionsStringEXT_op>()());
}
