// Copies. Framebuffer objects are whole on every part, and a copy from one is each part's own. Of the window a part has
// but its share: the pixels are gathered, and reach every part as an upload.
#include <cstdlib>

#include "extended/window_image.h"

namespace {

// `upload` is called with the pixels, under the state that changes their values, which the copy does once.
template <class Calls, class Upload>
void copy_window(const __osw_thread_state* state, const char* function, GLenum kind, const copied_rectangle& from,
                 Upload upload) {
  const image_form form = window_form(state, kind);
  const saved_transfers saved = begin_plain_transfers<Calls>(state);
  void* pixels = read_window<Calls>(state, form, from, function);
  end_plain_values<Calls>(state, saved);
  if (pixels) upload(form, static_cast<const void*>(pixels));
  free(pixels);
  end_plain_places<Calls>(state, saved);
}

// `gather` is called when the window is read.
template <class Calls, class Op, class Gather, class... Arguments>
void copy(Gather gather, Arguments... arguments) {
  const __osw_thread_state* state = __osw_fetch_thread_state();
  if (state->glrc->read_framebuffer) return Calls::template repeat<Op>(state, arguments...);
  Calls::begin();
  Calls::template show<Op>(state, arguments...);
  gather(state);
}

template <class Calls>
GLenum kind_of_level(const __osw_thread_state* state, GLenum target, GLint level) {
  GLint format = 0;
  Calls::ask(state, [&](auto get) {
    get(glGetTexLevelParameteriv_op(), target, level, GLenum{GL_TEXTURE_INTERNAL_FORMAT}, &format);
  });
  return kind_of_format(static_cast<GLenum>(format));
}

// A new image of a texture, with its dimensions between the format and the border.
template <class Calls, class Copy, class Upload, class... Size>
void copy_image(GLenum target, GLint level, GLenum format, const copied_rectangle& from, GLint border, Size... size) {
  copy<Calls, Copy>(
      [=](const __osw_thread_state* state) {
        copy_window<Calls>(state, Copy::name, kind_of_format(format), from,
                           [=](const image_form& form, const void* pixels) {
                             Calls::template call<Upload>(state, target, level, static_cast<GLint>(format), size...,
                                                          border, form.format, form.type, pixels);
                           });
      },
      target, level, format, from.x, from.y, size..., border);
}

// A piece of one. `upload` gets the form and the pixels.
template <class Calls, class Copy, class Upload, class... Arguments>
void copy_piece(GLenum target, GLint level, const copied_rectangle& from, Upload upload, Arguments... arguments) {
  copy<Calls, Copy>(
      [=](const __osw_thread_state* state) {
        const GLenum kind = kind_of_level<Calls>(state, target, level);
        copy_window<Calls>(state, Copy::name, kind, from,
                           [=](const image_form& form, const void* pixels) { upload(state, form, pixels); });
      },
      target, level, arguments...);
}

GLenum kind_of_planes(GLenum planes) {
  return planes == GL_DEPTH || planes == GL_STENCIL || planes == GL_DEPTH_STENCIL ? planes : GL_COLOR;
}

template <class Calls>
void copy_pixels(const copied_rectangle& from, GLenum planes) {
  copy<Calls, glCopyPixels_op>(
      [=](const __osw_thread_state* state) {
        copy_window<Calls>(state, glCopyPixels_op::name, kind_of_planes(planes), from,
                           [=](const image_form& form, const void* pixels) {
                             Calls::template call<glDrawPixels_op>(state, from.width, from.height, form.format,
                                                                   form.type, pixels);
                           });
      },
      from.x, from.y, from.width, from.height, planes);
}

template <class Calls>
void copy_piece_1d(GLenum target, GLint level, GLint to_x, GLint x, GLint y, GLsizei width) {
  copy_piece<Calls, glCopyTexSubImage1D_op>(
      target, level, {x, y, width, 1},
      [=](const __osw_thread_state* state, const image_form& form, const void* pixels) {
        Calls::template call<glTexSubImage1D_op>(state, target, level, to_x, width, form.format, form.type, pixels);
      },
      to_x, x, y, width);
}

template <class Calls>
void copy_piece_2d(GLenum target, GLint level, GLint to_x, GLint to_y, const copied_rectangle& from) {
  copy_piece<Calls, glCopyTexSubImage2D_op>(
      target, level, from,
      [=](const __osw_thread_state* state, const image_form& form, const void* pixels) {
        Calls::template call<glTexSubImage2D_op>(state, target, level, to_x, to_y, from.width, from.height, form.format,
                                                 form.type, pixels);
      },
      to_x, to_y, from.x, from.y, from.width, from.height);
}

template <class Calls>
void copy_piece_3d(GLenum target, GLint level, GLint to_x, GLint to_y, GLint to_z, const copied_rectangle& from) {
  copy_piece<Calls, glCopyTexSubImage3D_op>(
      target, level, from,
      [=](const __osw_thread_state* state, const image_form& form, const void* pixels) {
        Calls::template call<glTexSubImage3D_op>(state, target, level, to_x, to_y, to_z, from.width, from.height, 1,
                                                 form.format, form.type, pixels);
      },
      to_x, to_y, to_z, from.x, from.y, from.width, from.height);
}

}  // namespace

void changed<glCopyPixels_op>::encode(GLint x, GLint y, GLsizei width, GLsizei height, GLenum planes) {
  copy_pixels<threaded_calls>({x, y, width, height}, planes);
}

void changed<glCopyPixels_op>::broadcast(GLint x, GLint y, GLsizei width, GLsizei height, GLenum planes) {
  copy_pixels<sequential_calls>({x, y, width, height}, planes);
}

void changed<glCopyTexImage1D_op>::encode(GLenum target, GLint level, GLenum format, GLint x, GLint y, GLsizei width,
                                          GLint border) {
  copy_image<threaded_calls, glCopyTexImage1D_op, glTexImage1D_op>(target, level, format, {x, y, width, 1}, border,
                                                                   width);
}

void changed<glCopyTexImage1D_op>::broadcast(GLenum target, GLint level, GLenum format, GLint x, GLint y, GLsizei width,
                                             GLint border) {
  copy_image<sequential_calls, glCopyTexImage1D_op, glTexImage1D_op>(target, level, format, {x, y, width, 1}, border,
                                                                     width);
}

void changed<glCopyTexImage2D_op>::encode(GLenum target, GLint level, GLenum format, GLint x, GLint y, GLsizei width,
                                          GLsizei height, GLint border) {
  copy_image<threaded_calls, glCopyTexImage2D_op, glTexImage2D_op>(target, level, format, {x, y, width, height}, border,
                                                                   width, height);
}

void changed<glCopyTexImage2D_op>::broadcast(GLenum target, GLint level, GLenum format, GLint x, GLint y, GLsizei width,
                                             GLsizei height, GLint border) {
  copy_image<sequential_calls, glCopyTexImage2D_op, glTexImage2D_op>(target, level, format, {x, y, width, height},
                                                                     border, width, height);
}

void changed<glCopyTexSubImage1D_op>::encode(GLenum target, GLint level, GLint to_x, GLint x, GLint y, GLsizei width) {
  copy_piece_1d<threaded_calls>(target, level, to_x, x, y, width);
}

void changed<glCopyTexSubImage1D_op>::broadcast(GLenum target, GLint level, GLint to_x, GLint x, GLint y,
                                                GLsizei width) {
  copy_piece_1d<sequential_calls>(target, level, to_x, x, y, width);
}

void changed<glCopyTexSubImage2D_op>::encode(GLenum target, GLint level, GLint to_x, GLint to_y, GLint x, GLint y,
                                             GLsizei width, GLsizei height) {
  copy_piece_2d<threaded_calls>(target, level, to_x, to_y, {x, y, width, height});
}

void changed<glCopyTexSubImage2D_op>::broadcast(GLenum target, GLint level, GLint to_x, GLint to_y, GLint x, GLint y,
                                                GLsizei width, GLsizei height) {
  copy_piece_2d<sequential_calls>(target, level, to_x, to_y, {x, y, width, height});
}

void changed<glCopyTexSubImage3D_op>::encode(GLenum target, GLint level, GLint to_x, GLint to_y, GLint to_z, GLint x,
                                             GLint y, GLsizei width, GLsizei height) {
  copy_piece_3d<threaded_calls>(target, level, to_x, to_y, to_z, {x, y, width, height});
}

void changed<glCopyTexSubImage3D_op>::broadcast(GLenum target, GLint level, GLint to_x, GLint to_y, GLint to_z, GLint x,
                                                GLint y, GLsizei width, GLsizei height) {
  copy_piece_3d<sequential_calls>(target, level, to_x, to_y, to_z, {x, y, width, height});
}
