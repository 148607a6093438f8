// Queries of values in window coordinates, which are the host's without the offset.
#include <cstring>
#include <limits>

#include "binding.h"
#include "extension_names.h"
#include "host.h"
#include "own_ops.h"

namespace {

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
    if (name == GL_NUM_EXTENSIONS) *values -= static_cast<Value>(withheld_extension_count(c));
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
