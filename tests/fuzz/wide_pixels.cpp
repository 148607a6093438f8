// Reads of pixels and copies of the window: each part shows a share, and what the program gets is one picture.
#include <algorithm>

#include "expectation.h"
#include "wide_expectation.h"

namespace fuzz {

namespace {

using arguments_of = const driver::argument_bits&;

i32 number(u64 bits) {
  return static_cast<i32>(bits);
}

bool is_in_window(const wide_expectation& all, i32 x, i32 y) {
  return x >= 0 && y >= 0 && x < all.width && y < all.height;
}

image image_of_read(arguments_of a) {
  return {.width = number(a[2]),
          .height = number(a[3]),
          .format = static_cast<GLenum>(a[4]),
          .type = static_cast<GLenum>(a[5])};
}

// Outside of the window pixels are whatever they are.
void free_outside(const wide_expectation& all, arguments_of a, const image& of, std::vector<bool>* is_free) {
  const image_layout layout = lay_out(of, all.part.pack);
  if (!layout.sizable || layout.pixel == 0) return;
  for (i32 y = 0; y < of.height; ++y) {
    const u64 row = layout.first + static_cast<u64>(y) * layout.row;
    for (u64 byte = 0; byte < layout.row_bytes; ++byte) {
      const i32 x = number(a[0]) + static_cast<i32>(byte / layout.pixel);
      if (!is_in_window(all, x, number(a[1]) + y)) (*is_free)[row + byte] = true;
    }
  }
}

// ---- copies ----

struct pixel_form {
  GLenum format, type;
};

pixel_form form_of(GLenum kind) {
  if (kind == GL_DEPTH) return {GL_DEPTH_COMPONENT, GL_UNSIGNED_INT};
  return {GL_RGBA, GL_UNSIGNED_BYTE};
}

GLenum kind_of(GLenum internal_format) {
  const bool depth = internal_format == GL_DEPTH_COMPONENT || internal_format == GL_DEPTH_COMPONENT16 ||
                     internal_format == GL_DEPTH_COMPONENT24;
  return depth ? GL_DEPTH : GL_COLOR;
}

struct upload {
  int op = 0;
  i32 x = 0, y = 0, width = 0, height = 1;
  std::vector<u64> before;  // the arguments up to the format
  pixel_form form{};
};

upload upload_of(int op, arguments_of a) {
  const auto internal = kind_of(internal_format_of(static_cast<GLenum>(a[0])));
  switch (op) {
    case glCopyPixels_op::op:
      return {glDrawPixels_op::op,
              number(a[0]),
              number(a[1]),
              number(a[2]),
              number(a[3]),
              {a[2], a[3]},
              form_of(static_cast<GLenum>(a[4]))};
    case glCopyTexImage1D_op::op:
      return {glTexImage1D_op::op,
              number(a[3]),
              number(a[4]),
              number(a[5]),
              1,
              {a[0], a[1], a[2], a[5], a[6]},
              form_of(kind_of(static_cast<GLenum>(a[2])))};
    case glCopyTexImage2D_op::op:
      return {glTexImage2D_op::op,
              number(a[3]),
              number(a[4]),
              number(a[5]),
              number(a[6]),
              {a[0], a[1], a[2], a[5], a[6], a[7]},
              form_of(kind_of(static_cast<GLenum>(a[2])))};
    case glCopyTexSubImage1D_op::op:
      return {glTexSubImage1D_op::op,   number(a[3]),     number(a[4]), number(a[5]), 1,
              {a[0], a[1], a[2], a[5]}, form_of(internal)};
    case glCopyTexSubImage2D_op::op:
      return {glTexSubImage2D_op::op, number(a[4]), number(a[5]),
              number(a[6]),           number(a[7]), {a[0], a[1], a[2], a[3], a[6], a[7]},
              form_of(internal)};
    default:
      return {glTexSubImage3D_op::op, number(a[5]), number(a[6]),
              number(a[7]),           number(a[8]), {a[0], a[1], a[2], a[3], a[4], a[7], a[8], 1},
              form_of(internal)};
  }
}

// What the textures and windows of all get: the window's pixels, one behind the other.
effect effect_of(const wide_expectation& all, const upload& sent) {
  std::vector<u8> pixels;
  for (i32 y = 0; y < sent.height; ++y) {
    for (i32 x = 0; x < sent.width; ++x) {
      for (u64 byte = 0; byte < 4; ++byte) pixels.push_back(pixel_at(sent.x + x, sent.y + y, byte));
    }
  }
  if (pixels.empty()) pixels.resize(64);
  driver::argument_bits a = {};
  std::ranges::copy(sent.before, a.begin());
  a[sent.before.size()] = sent.form.format;
  a[sent.before.size() + 1] = sent.form.type;
  a[sent.before.size() + 2] = driver::bits_of(pixels.data());
  gl_model packed = fresh_model(0, true, true);
  effect sent_on = reach(&packed, sent.op, a);
  sent_on.state = all.part.transfer_digest;
  return sent_on;
}

}  // namespace

bool copies_window(const wide_expectation& all, int op) {
  return is_copy(op) && !all.part.read_framebuffer;
}

void expect_copy(wide_expectation* all, int op, arguments_of a) {
  const effect uploaded = effect_of(*all, upload_of(op, a));
  if (is_threaded(*all) && all->mirrors) {
    all->app_effects.push_back(reach(&all->app, op, a));
    // Of its own window's pixels it knows nothing: what it uploads are those of the parts.
    all->app_effects.push_back(uploaded);
  }
  all->part_effects.push_back({uploaded});
}

outcome expect_pixels(wide_expectation* all, arguments_of a) {
  outcome made;
  const image of = image_of_read(a);
  const image_layout layout = lay_out(of, all->part.pack);
  if (all->part.bound[pack_target]) {
    write_pixels(&all->part, a, nullptr);
    return made;
  }
  if (!layout.sizable) return made;
  const auto* before = reinterpret_cast<const u8*>(a[6]);
  made.image.assign(before, before + layout.end);
  made.is_free.assign(layout.end, false);
  write_pixels(&all->part, a, made.image.data());
  if (!all->part.read_framebuffer) free_outside(*all, a, of, &made.is_free);
  made.written.at = a[6];
  return made;
}

}  // namespace fuzz
