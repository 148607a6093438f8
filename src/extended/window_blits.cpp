// Blits. What is blitted from the window, of which a part has but its share, is gathered first, and blitted by each
// part from an object of its own which holds the gathered pixels.
#include <algorithm>
#include <cstdlib>
#include <limits>

#include "extended/window_image.h"

namespace {

struct blit {
  GLint from[4];  // x0, y0, x1, y1
  GLint to[4];
  GLbitfield mask;
  GLenum filter;
};

template <class Calls>
void repeat(const __osw_thread_state* state, const blit& wanted) {
  const auto& [from, to, mask, filter] = wanted;
  Calls::template repeat<glBlitFramebuffer_op>(state, from[0], from[1], from[2], from[3], to[0], to[1], to[2], to[3],
                                               mask, filter);
}

bool reaches_depth(const blit& wanted) {
  return wanted.mask & (GL_DEPTH_BUFFER_BIT | GL_STENCIL_BUFFER_BIT);
}

// GL says itself what is wrong with another one.
bool is_valid(const blit& wanted) {
  constexpr GLbitfield known = GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT | GL_STENCIL_BUFFER_BIT;
  if (!wanted.mask || wanted.mask & ~known) return false;
  return wanted.filter == GL_NEAREST || (wanted.filter == GL_LINEAR && !reaches_depth(wanted));
}

struct span {
  GLint begin;
  GLint length;
};

// Of the pixels from 0 to `size` those between two coordinates, in either order. Where a filter takes in others too,
// all of them, for its results depend on the image's size to the last bit.
span pixels_between(GLint first, GLint last, GLint size, GLenum filter) {
  const GLint begin = std::max(std::min(first, last), 0);
  const GLint end = std::min(std::max(first, last), size);
  if (begin >= end) return {};
  return filter == GL_NEAREST ? span{begin, end - begin} : span{0, size};
}

copied_rectangle source_of(const __osw_thread_state* state, const blit& wanted) {
  const drawable_size size = size_of_drawable(state);
  const span across = pixels_between(wanted.from[0], wanted.from[2], size.width, wanted.filter);
  const span upwards = pixels_between(wanted.from[1], wanted.from[3], size.height, wanted.filter);
  return {across.begin, upwards.begin, across.length, upwards.length};
}

GLint moved_by(GLint coordinate, GLint distance) {
  return static_cast<GLint>(std::max<int64_t>(int64_t{coordinate} - distance, std::numeric_limits<GLint>::min()));
}

// An object with the gathered pixels, as the target that is read.
struct gathered {
  GLuint textures[2] = {};  // color, and depth with stencil
  GLuint framebuffer = 0;
  GLint bound_texture = 0;  // the program's
};

template <class Calls>
void attach(const __osw_thread_state* state, GLuint texture, GLenum attachment) {
  Calls::template call<glFramebufferTexture2D_op>(state, GLenum{GL_READ_FRAMEBUFFER}, attachment, GLenum{GL_TEXTURE_2D},
                                                  texture, 0);
}

// The depth and stencil that two targets of a blit have must be equal.
GLenum depth_format(const PIXELFORMATDESCRIPTOR& drawable) {
  if (drawable.cStencilBits) return GL_DEPTH24_STENCIL8;
  if (drawable.cDepthBits == 16) return GL_DEPTH_COMPONENT16;
  return drawable.cDepthBits == 32 ? GL_DEPTH_COMPONENT32 : GL_DEPTH_COMPONENT24;
}

GLenum color_format(const image_form& form) {
  if (form.type == GL_FLOAT) return GL_RGBA32F;
  return form.type == GL_UNSIGNED_SHORT ? GL_RGBA16 : GL_RGBA8;
}

template <class Calls>
void upload(const __osw_thread_state* state, const gathered& object, const copied_rectangle& from, bool is_depth) {
  const PIXELFORMATDESCRIPTOR drawable = drawable_format(state);
  const GLenum kind = !is_depth ? GL_COLOR : drawable.cStencilBits ? GL_DEPTH_STENCIL : GL_DEPTH;
  const image_form form = window_form(state, kind);
  void* pixels = read_window<Calls>(state, form, from, glBlitFramebuffer_op::name);
  const GLenum format = is_depth ? depth_format(drawable) : color_format(form);
  Calls::template call<glBindTexture_op>(state, GLenum{GL_TEXTURE_2D}, object.textures[is_depth]);
  if (pixels) {
    Calls::template call<glTexImage2D_op>(state, GLenum{GL_TEXTURE_2D}, 0, static_cast<GLint>(format), from.width,
                                          from.height, 0, form.format, form.type, static_cast<const void*>(pixels));
  }
  free(pixels);
}

template <class Calls>
gathered gather(const __osw_thread_state* state, const blit& wanted, const copied_rectangle& from) {
  gathered made;
  Calls::ask(state, [&](auto get) { get(glGetIntegerv_op(), GLenum{GL_TEXTURE_BINDING_2D}, &made.bound_texture); });
  Calls::template call<glGenTextures_op>(state, 2, made.textures);
  Calls::template call<glGenFramebuffers_op>(state, 1, &made.framebuffer);
  const bool has_color = wanted.mask & GL_COLOR_BUFFER_BIT;
  const bool has_depth = reaches_depth(wanted);
  if (has_color) upload<Calls>(state, made, from, false);
  if (has_depth) upload<Calls>(state, made, from, true);
  Calls::template call<glBindFramebuffer_op>(state, GLenum{GL_READ_FRAMEBUFFER}, made.framebuffer);
  const bool has_stencil = drawable_format(state).cStencilBits;
  if (has_color) attach<Calls>(state, made.textures[0], GL_COLOR_ATTACHMENT0);
  if (has_depth) attach<Calls>(state, made.textures[1], GL_DEPTH_ATTACHMENT);
  if (has_depth && has_stencil) attach<Calls>(state, made.textures[1], GL_STENCIL_ATTACHMENT);
  return made;
}

template <class Calls>
void take_down(const __osw_thread_state* state, const gathered& object) {
  Calls::template call<glBindFramebuffer_op>(state, GLenum{GL_READ_FRAMEBUFFER}, 0u);
  Calls::template call<glBindTexture_op>(state, GLenum{GL_TEXTURE_2D}, static_cast<GLuint>(object.bound_texture));
  Calls::template call<glDeleteFramebuffers_op>(state, 1, &object.framebuffer);
  Calls::template call<glDeleteTextures_op>(state, 2, &object.textures[0]);
}

template <class Calls>
void do_blit(const blit& wanted) {
  const __osw_thread_state* state = __osw_fetch_thread_state();
  const bool has_objects = sys_gl<glBindFramebuffer_op>(state) && sys_gl<glFramebufferTexture2D_op>(state);
  if (state->glrc->read_framebuffer || !is_valid(wanted) || !has_objects) return repeat<Calls>(state, wanted);
  const copied_rectangle from = source_of(state, wanted);
  // Nothing of the window is read.
  if (from.width < 1 || from.height < 1) return repeat<Calls>(state, wanted);
  Calls::begin();
  const saved_transfers saved = begin_plain_transfers<Calls>(state);
  const gathered object = gather<Calls>(state, wanted, from);
  blit moved = wanted;
  for (int i = 0; i < 4; ++i) moved.from[i] = moved_by(wanted.from[i], i % 2 ? from.y : from.x);
  repeat<Calls>(state, moved);
  take_down<Calls>(state, object);
  end_plain_values<Calls>(state, saved);
  end_plain_places<Calls>(state, saved);
}

}  // namespace

void changed<glBlitFramebuffer_op>::encode(GLint from_x0, GLint from_y0, GLint from_x1, GLint from_y1, GLint to_x0,
                                           GLint to_y0, GLint to_x1, GLint to_y1, GLbitfield mask, GLenum filter) {
  do_blit<threaded_calls>({{from_x0, from_y0, from_x1, from_y1}, {to_x0, to_y0, to_x1, to_y1}, mask, filter});
}

void changed<glBlitFramebuffer_op>::broadcast(GLint from_x0, GLint from_y0, GLint from_x1, GLint from_y1, GLint to_x0,
                                              GLint to_y0, GLint to_x1, GLint to_y1, GLbitfield mask, GLenum filter) {
  do_blit<sequential_calls>({{from_x0, from_y0, from_x1, from_y1}, {to_x0, to_y0, to_x1, to_y1}, mask, filter});
}
