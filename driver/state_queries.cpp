// Queries of the scissor test, which is the application's and not the one that is cut, and of what a process that is
// told less hears in place of the host's.
#include "binding.h"
#include "extension_names.h"
#include "host.h"
#include "own_ops.h"
#include "scissor_cut.h"
#include "spread_process.h"
#include "told_version.h"

namespace {

bool is_told(GLenum name) {
  return name == GL_NUM_EXTENSIONS || name == GL_MAJOR_VERSION || name == GL_MINOR_VERSION;
}

// A query that fails writes nothing, and a number that is told is never negative.
template <class Op, class Value>
[[gnu::noinline]] void ask_told(GLenum name, Value* values) {
  context* c = calling_context();
  if (!c || !is_told_less()) {
    host_gl_entry<Op>()(name, values);
    return;
  }
  GLint hosts = -1;
  host_gl_entry<glGetIntegerv_op>()(name, &hosts);
  if (hosts < 0) return;
  const GLint told = name == GL_NUM_EXTENSIONS ? hosts - withheld_extension_count(c) : told_version_number(name, hosts);
  if constexpr (std::is_same_v<Value, GLboolean>) {
    *values = told != 0;
  } else {
    *values = static_cast<Value>(told);
  }
}

template <class Op, class Value>
[[gnu::noinline]] void ask_whole(GLenum name, Value* values) {
  const uncut_scissor uncut(calling_context());
  host_gl_entry<Op>()(name, values);
}

template <class Op, class Value>
inline void ask(GLenum name, Value* values) {
  if (tells_scissor(name)) {
    ask_whole<Op>(name, values);
  } else if (is_told(name)) {
    ask_told<Op>(name, values);
  } else {
    host_gl_entry<Op>()(name, values);
  }
}

template <class Op, class Value>
void ask_indexed(GLenum name, GLuint index, Value* values) {
  const uncut_scissor uncut(tells_scissor(name) ? calling_context() : nullptr);
  host_gl_entry<Op>()(name, index, values);
}

}  // namespace

void own_call<glGetBooleanv_op>::call(GLenum name, GLboolean* values) {
  ask<glGetBooleanv_op>(name, values);
}

void own_call<glGetDoublev_op>::call(GLenum name, GLdouble* values) {
  ask<glGetDoublev_op>(name, values);
}

void own_call<glGetFloatv_op>::call(GLenum name, GLfloat* values) {
  ask<glGetFloatv_op>(name, values);
}

void own_call<glGetIntegerv_op>::call(GLenum name, GLint* values) {
  ask<glGetIntegerv_op>(name, values);
}

void own_call<glGetBooleani_v_op>::call(GLenum name, GLuint index, GLboolean* values) {
  ask_indexed<glGetBooleani_v_op>(name, index, values);
}

void own_call<glGetIntegeri_v_op>::call(GLenum name, GLuint index, GLint* values) {
  ask_indexed<glGetIntegeri_v_op>(name, index, values);
}

void own_call<glGetInteger64i_v_op>::call(GLenum name, GLuint index, GLint64* values) {
  ask_indexed<glGetInteger64i_v_op>(name, index, values);
}

void own_call<glGetBooleanIndexedvEXT_op>::call(GLenum name, GLuint index, GLboolean* values) {
  ask_indexed<glGetBooleanIndexedvEXT_op>(name, index, values);
}

void own_call<glGetIntegerIndexedvEXT_op>::call(GLenum name, GLuint index, GLint* values) {
  ask_indexed<glGetIntegerIndexedvEXT_op>(name, index, values);
}
