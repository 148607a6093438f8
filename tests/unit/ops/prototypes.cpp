// Holds the op list against the public GL headers: each row has the prototype that the header declares.
#define GL_GLEXT_PROTOTYPES
#include <type_traits>

#include "ops/ops.h"

extern "C" {
// What the headers lack: the EXT names of the query objects, and the driver's private ops.
void glGenQueriesEXT(GLsizei n, GLuint* ids);
void glDeleteQueriesEXT(GLsizei n, const GLuint* ids);
GLboolean glIsQueryEXT(GLuint id);
void glBeginQueryEXT(GLenum target, GLuint id);
void glEndQueryEXT(GLenum target);
void glGetQueryivEXT(GLenum target, GLenum pname, GLint* params);
void glGetQueryObjectuivEXT(GLuint id, GLenum pname, GLuint* params);
void glViewportOffsetZ4(GLint x, GLint y);
void glDrawableSizeZ4(GLint width, GLint height);
}

#define GL_OP(number, function, ...) \
  static_assert(std::is_same_v<decltype(::function), function##_op::type>, #function);
#include "ops/gl_ops.inc"
#include "ops/gl_wide.inc"
#undef GL_OP
