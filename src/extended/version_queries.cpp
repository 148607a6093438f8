// Queries of the version and of the names of extensions: what the system says, cut to what the program can have.
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "extended/lasting_text.h"
#include "extended/offered_names.h"
#include "ops/offered_version.h"
#include "sequential/broadcast.h"
#include "threaded/encode.h"

namespace {

struct numbers {
  int major, minor;
};

bool is_newer(const numbers& a, const numbers& b) {
  return a.major != b.major ? a.major > b.major : a.minor > b.minor;
}

numbers offered_gl() {
  return {newest_offered_version().major, newest_offered_version().minor};
}

numbers offered_language() {
  return {newest_offered_version().language / 100, newest_offered_version().language % 100};
}

// Puts `offered`, whose minor version has so many digits, in the place of a newer version at the head of a text. What
// begins otherwise is of another API, and stays.
const char* cut_version(const char* text, const numbers& offered, int digits) {
  numbers read{};
  int length = 0;
  if (sscanf(text, "%d.%d%n", &read.major, &read.minor, &length) != 2 || !is_newer(read, offered)) return text;
  const char* rest = text + length + strspn(text + length, ".0123456789");
  const size_t size = strlen(rest) + 16;
  auto* told = static_cast<char*>(malloc(size));
  if (told) snprintf(told, size, "%d.%0*d%s", offered.major, digits, offered.minor, rest);
  return lasting_text(told);
}

const char* cut_text(GLenum name, const char* text) {
  if (!text) return nullptr;
  switch (name) {
    case GL_EXTENSIONS:
      return offered_names(text);
    case GL_VERSION:
      return cut_version(text, offered_gl(), 1);
    case GL_SHADING_LANGUAGE_VERSION:
      return cut_version(text, offered_language(), 2);
    default:
      return text;
  }
}

const GLubyte* cut(GLenum name, const GLubyte* text) {
  return reinterpret_cast<const GLubyte*>(cut_text(name, reinterpret_cast<const char*>(text)));
}

bool is_cut(GLenum name) {
  return name == GL_NUM_EXTENSIONS || name == GL_MAJOR_VERSION || name == GL_MINOR_VERSION;
}

// In the place of the system's answer to one of the three.
GLint cut_number(const __osw_thread_state* state, GLenum name, GLint number) {
  if (name == GL_NUM_EXTENSIONS) return number - withheld_name_count(state);
  numbers system{};
  sys_gl<glGetIntegerv_op>(state)(GL_MAJOR_VERSION, &system.major);
  sys_gl<glGetIntegerv_op>(state)(GL_MINOR_VERSION, &system.minor);
  const numbers offered = offered_gl();
  if (!is_newer(system, offered)) return number;
  return name == GL_MAJOR_VERSION ? offered.major : offered.minor;
}

// `ask` is the path's form of glGetIntegerv. A query that fails writes nothing, and no number that is cut is negative.
template <class Value>
void tell_number(glGetIntegerv_op::type* ask, GLenum name, Value* value) {
  GLint number = -1;
  ask(name, &number);
  if (number < 0) return;
  const GLint told = cut_number(__osw_fetch_thread_state(), name, number);
  if constexpr (std::is_same_v<Value, GLboolean>) {
    *value = told != 0;
  } else {
    *value = static_cast<Value>(told);
  }
}

template <class Op, class Value>
void encode_number(GLenum name, Value* value) {
  if (is_cut(name)) return tell_number(encode_query<glGetIntegerv_op>, name, value);
  encode_query<Op, void>(name, value);
}

template <class Op, class Value>
void broadcast_number(GLenum name, Value* value) {
  if (is_cut(name)) return tell_number(repeat_on_each_part<glGetIntegerv_op>, name, value);
  broadcast<Op, void>(name, value);
}

GLuint index_in_system(GLenum name, GLuint index) {
  return name == GL_EXTENSIONS ? system_name_index(__osw_fetch_thread_state(), index) : index;
}

}  // namespace

const GLubyte* changed<glGetString_op>::encode(GLenum name) {
  return cut(name, encode_query<glGetString_op, const GLubyte*>(name));
}

const GLubyte* changed<glGetString_op>::broadcast(GLenum name) {
  return cut(name, repeat_on_each_part<glGetString_op>(name));
}

const GLubyte* changed<glGetStringi_op>::encode(GLenum name, GLuint index) {
  return encode_query<glGetStringi_op, const GLubyte*>(name, index_in_system(name, index));
}

const GLubyte* changed<glGetStringi_op>::broadcast(GLenum name, GLuint index) {
  return repeat_on_each_part<glGetStringi_op>(name, index_in_system(name, index));
}

void changed<glGetBooleanv_op>::encode(GLenum pname, GLboolean* params) {
  encode_number<glGetBooleanv_op>(pname, params);
}

void changed<glGetBooleanv_op>::broadcast(GLenum pname, GLboolean* params) {
  broadcast_number<glGetBooleanv_op>(pname, params);
}

void changed<glGetDoublev_op>::encode(GLenum pname, GLdouble* params) {
  encode_number<glGetDoublev_op>(pname, params);
}

void changed<glGetDoublev_op>::broadcast(GLenum pname, GLdouble* params) {
  broadcast_number<glGetDoublev_op>(pname, params);
}

void changed<glGetFloatv_op>::encode(GLenum pname, GLfloat* params) {
  encode_number<glGetFloatv_op>(pname, params);
}

void changed<glGetFloatv_op>::broadcast(GLenum pname, GLfloat* params) {
  broadcast_number<glGetFloatv_op>(pname, params);
}

void changed<glGetIntegerv_op>::encode(GLenum pname, GLint* params) {
  encode_number<glGetIntegerv_op>(pname, params);
}

void changed<glGetIntegerv_op>::broadcast(GLenum pname, GLint* params) {
  broadcast_number<glGetIntegerv_op>(pname, params);
}

void glGetInteger64v_op::encode(GLenum pname, GLint64* data) {
  encode_number<glGetInteger64v_op>(pname, data);
}

void glGetInteger64v_op::broadcast(GLenum pname, GLint64* data) {
  broadcast_number<glGetInteger64v_op>(pname, data);
}
