#include "scissor_cut.h"

#include <algorithm>
#include <atomic>

#include "binding.h"
#include "drawing_target.h"
#include "host.h"
#include "own_ops.h"

namespace {

constexpr GLbitfield scissor_groups = GL_SCISSOR_BIT | GL_ENABLE_BIT;

// Whether any display list changes or saves the scissor test. Contexts share lists, and few programs have one that
// does.
std::atomic<bool> lists_have_scissor;

struct span {
  GLint from;
  GLsizei length;
};

// Coordinates are the application's and may be anything.
span common(span a, span b) {
  const long long from = std::max(a.from, b.from);
  const long long to = std::min(1LL * a.from + a.length, 1LL * b.from + b.length);
  return {static_cast<GLint>(from), static_cast<GLsizei>(std::max(to - from, 0LL))};
}

void set_box(const GLint (&box)[4]) {
  host_gl_entry<glScissor_op>()(box[0], box[1], box[2], box[3]);
}

// False inside glBegin and glEnd, where nothing can be asked or set: then nothing is written.
bool ask_box(GLint (&box)[4]) {
  box[3] = -1;
  host_gl_entry<glGetIntegerv_op>()(GL_SCISSOR_BOX, box);
  return box[3] >= 0;
}

void cut(context* c) {
  scissor_state whole{};
  if (!ask_box(whole.box)) return;
  whole.enabled = host_gl_entry<glIsEnabled_op>()(GL_SCISSOR_TEST);
  c->uncut = whole;
  c->is_cut = true;
  if (!whole.enabled) host_gl_entry<glEnable_op>()(GL_SCISSOR_TEST);
  span x = {less(0, c->offset.x), c->share_size.cx}, y = {less(0, c->offset.y), c->share_size.cy};
  if (whole.enabled) {
    x = common(x, {whole.box[0], whole.box[2]});
    y = common(y, {whole.box[1], whole.box[3]});
  }
  host_gl_entry<glScissor_op>()(x.from, y.from, x.length, y.length);
}

bool lift(context* c) {
  GLint box[4];
  if (!c->is_cut || !ask_box(box)) return false;
  c->is_cut = false;
  set_box(c->uncut.box);
  if (!c->uncut.enabled) host_gl_entry<glDisable_op>()(GL_SCISSOR_TEST);
  return true;
}

// What goes into a list is not known again when the list is called.
void note_compiled(const context* c) {
  if (c && !lists_have_scissor.load(std::memory_order_relaxed) && is_compiling(c)) lists_have_scissor = true;
}

template <class Op>
[[gnu::noinline]] void change_test(GLenum capability) {
  context* c = calling_context();
  note_compiled(c);
  const uncut_scissor uncut(c);
  host_gl_entry<Op>()(capability);
}

template <class Op>
inline void change(GLenum capability) {
  if (capability == GL_SCISSOR_TEST) [[unlikely]]
    return change_test<Op>(capability);
  host_gl_entry<Op>()(capability);
}

template <class Op>
void change_indexed(GLenum capability, GLuint index) {
  if (capability == GL_SCISSOR_TEST) {
    // The cut switches the test of all viewports.
    if (index > 0) stop_cutting(calling_context());
    const uncut_scissor uncut(calling_context());
    host_gl_entry<Op>()(capability, index);
  } else {
    host_gl_entry<Op>()(capability, index);
  }
}

template <class Op, class... Index>
GLboolean is_enabled(GLenum capability, Index... index) {
  if (!tells_scissor(capability)) return host_gl_entry<Op>()(capability, index...);
  const uncut_scissor uncut(calling_context());
  return host_gl_entry<Op>()(capability, index...);
}

context* with_scissor_in_lists() {
  return lists_have_scissor.load(std::memory_order_relaxed) ? calling_context() : nullptr;
}

}  // namespace

void settle_cut(context* c) {
  c->cut_pending = false;
  if (!c->is_cut && !has_share(c)) return;
  lift(c);
  if (!c->is_cut && !c->is_never_cut && has_share(c) && c->window_drawn && !is_compiling(c)) cut(c);
}

void stop_cutting(context* c) {
  if (!c) return;
  note_compiled(c);
  c->is_never_cut = true;
  lift(c);
}

uncut_scissor::uncut_scissor(context* c) : lifted(c && lift(c) ? c : nullptr) {}

uncut_scissor::~uncut_scissor() {
  if (lifted) cut(lifted);
}

void copy_cut(context* destination, const context* source, GLbitfield mask) {
  if (mask & GL_SCISSOR_BIT) {
    destination->is_cut = source->is_cut;
    destination->is_never_cut = source->is_never_cut;
    destination->uncut = source->uncut;
  } else if (mask & GL_ENABLE_BIT && source->is_cut) {
    destination->uncut.enabled = source->uncut.enabled;
  }
}

void own_call<glScissor_op>::call(GLint x, GLint y, GLsizei width, GLsizei height) {
  context* c = calling_context();
  note_compiled(c);
  const uncut_scissor uncut(c);
  host_gl_entry<glScissor_op>()(x, y, width, height);
  if (c && c->scissor_pending && !is_compiling(c)) c->scissor_pending = false;
}

void own_call<glEnable_op>::call(GLenum capability) {
  change<glEnable_op>(capability);
}

void own_call<glDisable_op>::call(GLenum capability) {
  change<glDisable_op>(capability);
}

void own_call<glEnablei_op>::call(GLenum capability, GLuint index) {
  change_indexed<glEnablei_op>(capability, index);
}

void own_call<glDisablei_op>::call(GLenum capability, GLuint index) {
  change_indexed<glDisablei_op>(capability, index);
}

void own_call<glEnableIndexedEXT_op>::call(GLenum capability, GLuint index) {
  change_indexed<glEnableIndexedEXT_op>(capability, index);
}

void own_call<glDisableIndexedEXT_op>::call(GLenum capability, GLuint index) {
  change_indexed<glDisableIndexedEXT_op>(capability, index);
}

GLboolean own_call<glIsEnabled_op>::call(GLenum capability) {
  return is_enabled<glIsEnabled_op>(capability);
}

GLboolean own_call<glIsEnabledi_op>::call(GLenum capability, GLuint index) {
  return is_enabled<glIsEnabledi_op>(capability, index);
}

GLboolean own_call<glIsEnabledIndexedEXT_op>::call(GLenum capability, GLuint index) {
  return is_enabled<glIsEnabledIndexedEXT_op>(capability, index);
}

// The host's stack has the application's values, also of what is pushed here and popped by a list.
void own_call<glPushAttrib_op>::call(GLbitfield mask) {
  if (!(mask & scissor_groups)) return host_gl_entry<glPushAttrib_op>()(mask);
  context* c = calling_context();
  note_compiled(c);
  const uncut_scissor uncut(c);
  host_gl_entry<glPushAttrib_op>()(mask);
}

void own_call<glPopAttrib_op>::call() {
  context* c = calling_context();
  note_compiled(c);
  const uncut_scissor uncut(c);
  host_gl_entry<glPopAttrib_op>()();
}

// Nothing of ours may get into a list.
void own_call<glNewList_op>::call(GLuint list, GLenum mode) {
  context* c = calling_context();
  if (c) lift(c);
  host_gl_entry<glNewList_op>()(list, mode);
  if (c) settle_cut(c);
}

void own_call<glEndList_op>::call() {
  context* c = calling_context();
  host_gl_entry<glEndList_op>()();
  if (c) settle_cut(c);
}

void own_call<glCallList_op>::call(GLuint list) {
  const uncut_scissor uncut(with_scissor_in_lists());
  host_gl_entry<glCallList_op>()(list);
}

void own_call<glCallLists_op>::call(GLsizei n, GLenum type, const void* lists) {
  const uncut_scissor uncut(with_scissor_in_lists());
  host_gl_entry<glCallLists_op>()(n, type, lists);
}
