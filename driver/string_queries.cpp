// The host's strings, as far as a process that is told less hears others.
#include "binding.h"
#include "extension_names.h"
#include "host.h"
#include "own_ops.h"
#include "spread_process.h"
#include "stand_in.h"
#include "told_version.h"

namespace {

const char* told_string(GLenum name, const char* hosts) {
  switch (name) {
    case GL_EXTENSIONS:
      return offered_extensions(hosts);
    case GL_VERSION:
    case GL_SHADING_LANGUAGE_VERSION:
      return told_version_text(name, hosts);
    default:
      return hosts;
  }
}

}  // namespace

const GLubyte* own_call<glGetString_op>::call(GLenum name) {
  const context* c = calling_context();
  const GLubyte* string = host_gl_entry<glGetString_op>()(name);
  if (!c || !is_told_less()) return string;
  return reinterpret_cast<const GLubyte*>(told_string(name, reinterpret_cast<const char*>(string)));
}

const GLubyte* own_call<glGetStringi_op>::call(GLenum name, GLuint index) {
  const context* c = calling_context();
  if (c && name == GL_EXTENSIONS) index = host_extension_index(index);
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
