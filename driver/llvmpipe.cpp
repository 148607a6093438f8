#include "llvmpipe.h"

#include <cstring>

#include "host.h"
#include "passing_context.h"

namespace {

// Of four bytes a pixel: just less than the 32 MiB up to which the allocator learns.
constexpr GLsizei side = 2880;

// The name goes with the context: an application gets the names that it gets alone.
bool give_back_large_block() {
  if (!is_llvmpipe()) return false;
  GLuint texture = 0;
  host_gl_entry<glGenTextures_op>()(1, &texture);
  host_gl_entry<glBindTexture_op>()(GL_TEXTURE_2D, texture);
  host_gl_entry<glTexImage2D_op>()(GL_TEXTURE_2D, 0, GL_RGBA8, side, side, 0, GL_RGBA, GL_UNSIGNED_BYTE, nullptr);
  host_gl_entry<glDeleteTextures_op>()(1, &texture);
  return true;
}

}  // namespace

bool is_llvmpipe() {
  const auto* renderer = reinterpret_cast<const char*>(host_gl_entry<glGetString_op>()(GL_RENDERER));
  return renderer && strncmp(renderer, "llvmpipe", 8) == 0;
}

// A frame's state and triangles lie in blocks that are taken for it, some megabytes of them for a part that draws text,
// and given back behind it. From 128 KiB on, the allocator of the C library hands what was given back on to the system,
// which has to clear it page by page for the next frame. Once a large block has been given back, it keeps twice as
// much.
void keep_host_memory(HDC hdc) {
  static bool done;
  if (done) return;
  done = true;
  under_passing_context(hdc, give_back_large_block);
}
