#include "attribute_stack.h"

#include <cstring>

#include "binding.h"
#include "host.h"
#include "own_ops.h"
#include "window_offset.h"

namespace {

// Inside glBegin and glEnd, where nothing can be asked: -1.
GLint attribute_depth() {
  GLint depth = -1;
  host_gl_entry<glGetIntegerv_op>()(GL_ATTRIB_STACK_DEPTH, &depth);
  return depth;
}

void restore_offsets(applied_offsets* to, const applied_offsets& from, GLbitfield mask) {
  if (mask & GL_VIEWPORT_BIT) to->viewport = from.viewport;
  if (mask & GL_SCISSOR_BIT) to->scissor = from.scissor;
  if (mask & GL_CURRENT_BIT) to->raster = from.raster;
}

// What an offset is contained in.
struct shifted_values {
  GLint viewport[4], scissor[4];
  GLfloat raster[4];
};

shifted_values ask_shifted_values() {
  shifted_values values{};
  host_gl_entry<glGetIntegerv_op>()(GL_VIEWPORT, values.viewport);
  host_gl_entry<glGetIntegerv_op>()(GL_SCISSOR_BOX, values.scissor);
  host_gl_entry<glGetFloatv_op>()(GL_CURRENT_RASTER_POSITION, values.raster);
  return values;
}

// The groups of `mask` that a pop brought back. Some hosts leave a group out that did not change since the last push,
// also when it changed since an earlier one; what was brought back under another offset is not what it was before.
GLbitfield restored_groups(GLbitfield mask, const shifted_values& before, const shifted_values& after) {
  if (memcmp(before.viewport, after.viewport, sizeof before.viewport) == 0) mask &= ~GL_VIEWPORT_BIT;
  if (memcmp(before.scissor, after.scissor, sizeof before.scissor) == 0) mask &= ~GL_SCISSOR_BIT;
  // NOLINTNEXTLINE(bugprone-suspicious-memory-comparison): it is the host's bits that were brought back
  if (memcmp(before.raster, after.raster, sizeof before.raster) == 0) mask &= ~GL_CURRENT_BIT;
  return mask;
}

void pop_under_other_offset(context* c, const attribute_level& level) {
  const shifted_values before = ask_shifted_values();
  host_gl_entry<glPopAttrib_op>()();
  restore_offsets(&c->applied, level.applied, restored_groups(level.mask, before, ask_shifted_values()));
  settle_offset(c);
}

}  // namespace

void copy_offsets(context* destination, const context* source, GLbitfield mask) {
  restore_offsets(&destination->applied, source->applied, mask);
}

// The level is that of the host's own stack, since pushes also come from display lists and may fail; a level that was
// noted and then not pushed is above the top and is noted anew before it is popped.
void own_call<glPushAttrib_op>::call(GLbitfield mask) {
  context* c = calling_context();
  if (c) {
    const GLint depth = attribute_depth();
    if (depth >= 0 && depth < attribute_level_count) c->levels[depth] = {mask, c->applied};
  }
  host_gl_entry<glPushAttrib_op>()(mask);
}

void own_call<glPopAttrib_op>::call() {
  context* c = calling_context();
  const GLint depth = c ? attribute_depth() : -1;
  const bool is_noted = depth >= 1 && depth <= attribute_level_count;
  if (is_noted && c->levels[depth - 1].applied != c->applied) {
    pop_under_other_offset(c, c->levels[depth - 1]);
  } else {
    host_gl_entry<glPopAttrib_op>()();
  }
}
