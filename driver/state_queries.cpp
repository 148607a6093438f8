#include "state_queries.h"

#include <cstring>
#include <limits>

namespace {

// A program that finds the first of these creates its contexts in a way that cannot be spanned; the others stand on it.
const char* const withheld[] = {"WGL_ARB_create_context", "WGL_ARB_create_context_profile",
                                "WGL_ARB_create_context_no_error", "WGL_ARB_create_context_robustness"};

bool is_withheld(const char* name, std::size_t length) {
  for (const char* candidate : withheld) {
    if (strlen(candidate) == length && memcmp(candidate, name, length) == 0) return true;
  }
  return false;
}

// Copies all of `from` but what is withheld, if `to` is not null. Returns whether anything is.
bool copy_offered(const char* from, char* to) {
  bool withholds = false;
  while (*from != 0) {
    const std::size_t length = strcspn(from, " ");
    const std::size_t blanks = strspn(from + length, " ");
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

// The indexed names are few hundred and the same for the life of a context.
int withheld_count(context* c) {
  if (c->withheld_extensions >= 0) return c->withheld_extensions;
  c->withheld_extensions = 0;
  GLint count = 0;
  host_gl_entry<glGetIntegerv_op>()(GL_NUM_EXTENSIONS, &count);
  if (!host_has<glGetStringi_op>()) return 0;
  for (GLint i = 0; i < count; ++i) c->withheld_extensions += is_withheld_at(static_cast<GLuint>(i));
  return c->withheld_extensions;
}

// The host's index of an offered name.
GLuint host_index(GLuint index) {
  GLuint at = 0;
  for (;; ++at) {
    if (is_withheld_at(at)) continue;
    if (index-- == 0 || !indexed_extension(at)) return at;
  }
}

point applied_to(const context* c, GLenum name) {
  switch (name) {
    case GL_VIEWPORT:
      return c->applied.viewport;
    case GL_SCISSOR_BOX:
      return c->applied.scissor;
    case GL_CURRENT_RASTER_POSITION:
      return c->applied.raster;
    default:
      return {0, 0};
  }
}

bool is_special(GLenum name) {
  return name == GL_VIEWPORT || name == GL_SCISSOR_BOX || name == GL_CURRENT_RASTER_POSITION ||
         name == GL_NUM_EXTENSIONS;
}

// The host's four values without the offset. A query that fails, inside glBegin and glEnd, writes nothing; a value that
// no box and no position has shows it.
template <class Value, class Ask>
bool ask_unshifted(point by, Value (&values)[4], Ask ask) {
  values[3] = std::numeric_limits<Value>::lowest();
  ask(values);
  if (values[3] == std::numeric_limits<Value>::lowest()) return false;
  values[0] -= static_cast<Value>(by.x);
  values[1] -= static_cast<Value>(by.y);
  return true;
}

template <class Value, class Ask>
void answer(point by, Value* to, Ask ask) {
  if (by == point{0, 0}) {
    ask(to);
    return;
  }
  Value values[4];
  if (ask_unshifted(by, values, ask)) memcpy(to, values, sizeof values);
}

// A boolean says whether the application's value is not 0, which the host's own boolean cannot tell.
template <class Ask, class AskFloat>
void answer_boolean(point by, GLboolean* to, Ask ask, AskFloat ask_float) {
  if (by == point{0, 0}) {
    ask(to);
    return;
  }
  GLfloat values[4];
  if (!ask_unshifted(by, values, ask_float)) return;
  for (int i = 0; i < 4; ++i) to[i] = values[i] != 0;
}

template <class Op, class Value>
[[gnu::noinline]] void ask_special(GLenum name, Value* values) {
  const auto ask = [name](auto* to) { host_gl_entry<Op>()(name, to); };
  context* c = calling_context();
  if (!c) {
    ask(values);
    return;
  }
  if constexpr (std::is_same_v<Value, GLboolean>) {
    const auto ask_float = [name](GLfloat* to) { host_gl_entry<glGetFloatv_op>()(name, to); };
    answer_boolean(applied_to(c, name), values, ask, ask_float);
  } else {
    answer(applied_to(c, name), values, ask);
    if (name == GL_NUM_EXTENSIONS) *values -= static_cast<Value>(withheld_count(c));
  }
}

template <class Op, class Value>
inline void ask(GLenum name, Value* values) {
  if (!bound_thread()) [[unlikely]]
    bind_current();
  if (is_special(name)) {
    ask_special<Op>(name, values);
  } else {
    host_gl_entry<Op>()(name, values);
  }
}

// There is one offset for all viewports and scissor boxes, as one call sets them all.
template <class Op, class Value>
void ask_indexed(GLenum name, GLuint index, Value* values) {
  const auto ask = [=](auto* to) { host_gl_entry<Op>()(name, index, to); };
  const context* c = calling_context();
  const point by = c ? applied_to(c, name) : point{0, 0};
  if constexpr (std::is_same_v<Value, GLboolean>) {
    const auto ask_float = [name](GLfloat* to) { host_gl_entry<glGetFloatv_op>()(name, to); };
    answer_boolean(by, values, ask, ask_float);
  } else {
    answer(by, values, ask);
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

template <>
void forward<glGetBooleanv_op, void>(GLenum name, GLboolean* values) {
  ask<glGetBooleanv_op>(name, values);
}

template <>
void forward<glGetDoublev_op, void>(GLenum name, GLdouble* values) {
  ask<glGetDoublev_op>(name, values);
}

template <>
void forward<glGetFloatv_op, void>(GLenum name, GLfloat* values) {
  ask<glGetFloatv_op>(name, values);
}

template <>
void forward<glGetIntegerv_op, void>(GLenum name, GLint* values) {
  ask<glGetIntegerv_op>(name, values);
}

template <>
void forward<glGetBooleani_v_op, void>(GLenum name, GLuint index, GLboolean* values) {
  ask_indexed<glGetBooleani_v_op>(name, index, values);
}

template <>
void forward<glGetIntegeri_v_op, void>(GLenum name, GLuint index, GLint* values) {
  ask_indexed<glGetIntegeri_v_op>(name, index, values);
}

template <>
void forward<glGetInteger64i_v_op, void>(GLenum name, GLuint index, GLint64* values) {
  ask_indexed<glGetInteger64i_v_op>(name, index, values);
}

template <>
void forward<glGetBooleanIndexedvEXT_op, void>(GLenum name, GLuint index, GLboolean* values) {
  ask_indexed<glGetBooleanIndexedvEXT_op>(name, index, values);
}

template <>
void forward<glGetIntegerIndexedvEXT_op, void>(GLenum name, GLuint index, GLint* values) {
  ask_indexed<glGetIntegerIndexedvEXT_op>(name, index, values);
}

template <>
const GLubyte* forward<glGetString_op, const GLubyte*>(GLenum name) {
  bind_current();
  const GLubyte* string = host_gl_entry<glGetString_op>()(name);
  if (name != GL_EXTENSIONS) return string;
  return reinterpret_cast<const GLubyte*>(offered_extensions(reinterpret_cast<const char*>(string)));
}

template <>
const GLubyte* forward<glGetStringi_op, const GLubyte*>(GLenum name, GLuint index) {
  context* c = calling_context();
  if (c && name == GL_EXTENSIONS && withheld_count(c) > 0) index = host_index(index);
  return host_gl_entry<glGetStringi_op>()(name, index);
}
