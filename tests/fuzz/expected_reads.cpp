// Reads of the framebuffer, of which each part has a share, and the six copies within it, which become a read of all
// parts and an upload to all parts.
#include <algorithm>

#include "expectation.h"

namespace fuzz {

namespace {

i32 number(u64 bits) {
  return static_cast<i32>(bits);
}

u64 bits(i32 value) {
  return driver::bits_of(value);
}

// Coordinates may be anything, so they wrap.
i32 sum(i32 a, i32 b) {
  return static_cast<i32>(static_cast<u32>(a) + static_cast<u32>(b));
}

i32 difference(i32 a, i32 b) {
  return static_cast<i32>(static_cast<u32>(a) - static_cast<u32>(b));
}

RECT intersection(const RECT& a, const RECT& b) {
  return {std::max(a.left, b.left), std::max(a.top, b.top), std::min(a.right, b.right), std::min(a.bottom, b.bottom)};
}

struct store_name {
  GLenum pack, unpack;
  i32 pixel_store::*field;
};

// In the order in which a copy saves, clears and restores them.
constexpr store_name stores[] = {{GL_PACK_SWAP_BYTES, GL_UNPACK_SWAP_BYTES, &pixel_store::swap_bytes},
                                 {GL_PACK_LSB_FIRST, GL_UNPACK_LSB_FIRST, &pixel_store::lsb_first},
                                 {GL_PACK_ROW_LENGTH, GL_UNPACK_ROW_LENGTH, &pixel_store::row_length},
                                 {GL_PACK_SKIP_ROWS, GL_UNPACK_SKIP_ROWS, &pixel_store::skip_rows},
                                 {GL_PACK_SKIP_PIXELS, GL_UNPACK_SKIP_PIXELS, &pixel_store::skip_pixels},
                                 {GL_PACK_IMAGE_HEIGHT, GL_UNPACK_IMAGE_HEIGHT, &pixel_store::image_height},
                                 {GL_PACK_SKIP_IMAGES, GL_UNPACK_SKIP_IMAGES, &pixel_store::skip_images}};
constexpr int stores_of_an_image = 5;
constexpr int all_stores = 7;

// ---- what a copy comes down to ----

struct pixel_format {
  GLenum format = 0;
  GLenum type = 0;
  u64 bits = 0;
};

pixel_format format_of(const expectation& all, GLenum kind) {
  if (kind == GL_COLOR && all.color_bits == 16) return {GL_RGB, GL_UNSIGNED_SHORT_5_6_5, 16};
  if (kind == GL_COLOR && all.color_bits == 24) return {GL_RGB, GL_UNSIGNED_BYTE, 24};
  if (kind == GL_COLOR && all.color_bits == 32) return {GL_RGBA, GL_UNSIGNED_BYTE, 32};
  if (kind == GL_DEPTH && all.depth_bits == 16) return {GL_DEPTH_COMPONENT, GL_UNSIGNED_SHORT, 16};
  if (kind == GL_DEPTH && (all.depth_bits == 24 || all.depth_bits == 32)) {
    return {GL_DEPTH_COMPONENT, GL_UNSIGNED_INT, 32};
  }
  return {};
}

// 32-bit depth counts as color.
GLenum kind_of_texture(GLenum internal_format) {
  if (internal_format == GL_STENCIL_INDEX) return GL_STENCIL;
  const bool depth = internal_format == GL_DEPTH_COMPONENT || internal_format == GL_DEPTH_COMPONENT16 ||
                     internal_format == GL_DEPTH_COMPONENT24;
  return depth ? GL_DEPTH : GL_COLOR;
}

GLenum kind_of_pixels(GLenum type) {
  return type == GL_COLOR || type == GL_DEPTH ? type : GL_STENCIL;
}

bool into_texture_part(int copy) {
  return copy == glCopyTexSubImage1D_op::op || copy == glCopyTexSubImage2D_op::op || copy == glCopyTexSubImage3D_op::op;
}

struct copy_plan {
  i32 x, y, width, height;
  pixel_format format;
  int upload_op;
  driver::argument_bits upload;  // without the pixels
  u32 pixels_at;
  bool of_pixels;  // glCopyPixels, which alone clears the unpack state
};

copy_plan plan(const expectation& all, int op, const driver::argument_bits& a) {
  copy_plan made{};
  GLenum kind = GL_COLOR;
  if (op == glCopyPixels_op::op) kind = kind_of_pixels(static_cast<GLenum>(a[4]));
  if (op == glCopyTexImage1D_op::op || op == glCopyTexImage2D_op::op) kind = kind_of_texture(static_cast<GLenum>(a[2]));
  if (into_texture_part(op)) kind = kind_of_texture(internal_format_of(static_cast<GLenum>(a[0])));
  made.format = format_of(all, kind);
  const auto from = [&](u32 first, bool has_height) {
    made.x = number(a[first]);
    made.y = number(a[first + 1]);
    made.width = number(a[first + 2]);
    made.height = has_height ? number(a[first + 3]) : 1;
  };
  const auto to = [&](int upload_op, std::initializer_list<u64> before) {
    made.upload_op = upload_op;
    made.upload = args(before);
    made.upload[before.size()] = made.format.format;
    made.upload[before.size() + 1] = made.format.type;
    made.pixels_at = static_cast<u32>(before.size()) + 2;
  };
  switch (op) {
    case glCopyPixels_op::op:
      from(0, true);
      to(glDrawPixels_op::op, {a[2], a[3]});
      made.of_pixels = true;
      break;
    case glCopyTexImage1D_op::op:
      from(3, false);
      to(glTexImage1D_op::op, {a[0], a[1], a[2], a[5], a[6]});
      break;
    case glCopyTexImage2D_op::op:
      from(3, true);
      to(glTexImage2D_op::op, {a[0], a[1], a[2], a[5], a[6], a[7]});
      break;
    case glCopyTexSubImage1D_op::op:
      from(3, false);
      to(glTexSubImage1D_op::op, {a[0], a[1], a[2], a[5]});
      break;
    case glCopyTexSubImage2D_op::op:
      from(4, true);
      to(glTexSubImage2D_op::op, {a[0], a[1], a[2], a[3], a[6], a[7]});
      break;
    default:
      from(5, true);
      to(glTexSubImage3D_op::op, {a[0], a[1], a[2], a[3], a[4], a[7], a[8], 1});
      break;
  }
  return made;
}

// Larger than any memory: the copy is dropped on all parts alike.
bool is_too_large(const copy_plan& plan) {
  if (plan.width < 1 || plan.height < 1) return false;
  return static_cast<u64>(plan.width) * static_cast<u64>(plan.height) > 0x7FFFFFFF && plan.format.bits > 0;
}

// Zeroed, and larger than what any call of the copy reaches; the library's own is a block of just the size it needs.
std::vector<u8> room_for(const copy_plan& plan, const pixel_store& unpack) {
  if (plan.width < 1 || plan.height < 1) return std::vector<u8>(64);
  image of{.width = plan.width, .height = plan.height, .format = plan.format.format, .type = plan.format.type};
  const image_layout packed = lay_out(of, {});
  of.dimensions = 3;
  const image_layout unpacked = lay_out(of, unpack);
  return std::vector<u8>(64 + std::max({packed.end, packed.told, unpacked.end, unpacked.told, packed.row * 64}) * 4);
}

driver::argument_bits read_arguments(const copy_plan& plan, const std::vector<u8>& buffer) {
  return args({bits(plan.x), bits(plan.y), bits(plan.width), bits(plan.height), plan.format.format, plan.format.type,
               driver::bits_of(buffer.data())});
}

void expect_read_of_all(expectation* all, const copy_plan& plan, std::vector<u8>* buffer) {
  for (gl_context& context : all->part) context.pixel_shadow = buffer->data();
  for (int part = 0; part < all->parts; ++part) expect_read(all, part, read_arguments(plan, *buffer), pointers::aimed);
}

driver::argument_bits upload_of(const copy_plan& plan, const std::vector<u8>& buffer) {
  driver::argument_bits upload = plan.upload;
  upload[plan.pixels_at] = driver::bits_of(buffer.data());
  return upload;
}

}  // namespace

void expect_read(expectation* all, int part, const driver::argument_bits& a, pointers become) {
  const share& own = all->shares[static_cast<std::size_t>(part)];
  const gl_context& context = all->part[static_cast<std::size_t>(part)];
  const i32 width = number(a[2]);
  const i32 height = number(a[3]);
  if (width < 1 || height < 1 || !own.visible) return;
  const i32 bottom = difference(all->client_height, number(a[1]));
  const RECT source = {number(a[0]), difference(bottom, height), sum(number(a[0]), width), bottom};
  const RECT shared = intersection(source, own.part);
  if (shared.left >= shared.right || shared.top >= shared.bottom) return;
  constexpr GLenum names[] = {GL_PACK_ROW_LENGTH, GL_PACK_IMAGE_HEIGHT, GL_PACK_SKIP_ROWS, GL_PACK_SKIP_PIXELS};
  const i32 saved[] = {context.pack.row_length, context.pack.image_height, context.pack.skip_rows,
                       context.pack.skip_pixels};
  const i32 during[] = {saved[0] >= 1 ? saved[0] : width, saved[1] >= 1 ? saved[1] : height,
                        saved[2] + source.bottom - shared.bottom, saved[3] + shared.left - source.left};
  u64 anywhere = 0;
  for (const GLenum name : names) {
    expect_part(all, part, glGetIntegerv_op::op, args({name, driver::bits_of(&anywhere)}), pointers::aimed);
  }
  for (int i = 0; i < 4; ++i) expect_part(all, part, glPixelStorei_op::op, args({names[i], bits(during[i])}));
  expect_part(all, part, glReadPixels_op::op,
              args({bits(shared.left - own.part.left), bits(own.part.bottom - shared.bottom),
                    bits(shared.right - shared.left), bits(shared.bottom - shared.top), a[4], a[5], a[6]}),
              become);
  for (int i = 0; i < 4; ++i) expect_part(all, part, glPixelStorei_op::op, args({names[i], bits(saved[i])}));
}

bool is_copy(int op) {
  return op == glCopyPixels_op::op || op == glCopyTexImage1D_op::op || op == glCopyTexImage2D_op::op ||
         into_texture_part(op);
}

// ---- the threaded path ----

namespace {

void expect_store(expectation* all, const pixel_store& saved, GLenum store_name::*name, int count, bool clears) {
  for (int i = 0; i < count; ++i) {
    const i32 value = saved.*stores[i].field;
    if (value) expect_parts(all, glPixelStorei_op::op, args({stores[i].*name, clears ? 0 : bits(value)}));
  }
}

void expect_bind(expectation* all, GLenum target, GLuint buffer) {
  expect_parts(all, glBindBuffer_op::op, args({target, buffer}));
}

// The application's own context uploads too, and must not take the memory for an offset into its unpack buffer.
void expect_mirrored_upload(expectation* all, const copy_plan& plan, const std::vector<u8>& buffer) {
  const GLuint unpack = all->record.unpack_buffer;
  if (unpack && all->mirrors) expect_question(all, glGetIntegerv_op::op, {GL_PIXEL_UNPACK_BUFFER_BINDING});
  if (unpack) expect_mirror(all, glBindBuffer_op::op, args({GL_PIXEL_UNPACK_BUFFER, 0}));
  expect_mirror(all, plan.upload_op, upload_of(plan, buffer), pointers::aimed);
  if (unpack) expect_mirror(all, glBindBuffer_op::op, args({GL_PIXEL_UNPACK_BUFFER, unpack}));
}

}  // namespace

void expect_threaded_copy(expectation* all, int op, const driver::argument_bits& arguments) {
  expect_mirror(all, op, arguments);
  const copy_plan plan = fuzz::plan(*all, op, arguments);
  if (into_texture_part(op)) {
    expect_question(all, glGetTexLevelParameteriv_op::op, {arguments[0], 0, GL_TEXTURE_INTERNAL_FORMAT});
  }
  if (is_too_large(plan)) return;
  const gl_context saved = all->record;
  std::vector<u8> buffer = room_for(plan, saved.unpack);
  if (saved.pack_buffer) expect_bind(all, GL_PIXEL_PACK_BUFFER, 0);
  if (saved.unpack_buffer) expect_bind(all, GL_PIXEL_UNPACK_BUFFER, 0);
  expect_store(all, saved.pack, &store_name::pack, stores_of_an_image, true);
  expect_read_of_all(all, plan, &buffer);
  if (plan.of_pixels) expect_store(all, saved.unpack, &store_name::unpack, all_stores, true);
  expect_mirrored_upload(all, plan, buffer);
  expect_parts(all, plan.upload_op, upload_of(plan, buffer), pointers::aimed);
  // Kept: the unpack binding comes back on the pack target.
  if (saved.pack_buffer) expect_bind(all, GL_PIXEL_PACK_BUFFER, saved.pack_buffer);
  if (saved.unpack_buffer) expect_bind(all, GL_PIXEL_PACK_BUFFER, saved.unpack_buffer);
  expect_store(all, saved.pack, &store_name::pack, all_stores, false);
  if (plan.of_pixels) expect_store(all, saved.unpack, &store_name::unpack, all_stores, false);
}

// ---- the sequential path ----

namespace {

struct half {
  GLenum store_name::*name;
  pixel_store gl_context::*store;
  GLuint gl_context::*buffer;
  GLenum target, binding;
};

constexpr half pack_half = {&store_name::pack, &gl_context::pack, &gl_context::pack_buffer, GL_PIXEL_PACK_BUFFER,
                            GL_PIXEL_PACK_BUFFER_BINDING};
constexpr half unpack_half = {&store_name::unpack, &gl_context::unpack, &gl_context::unpack_buffer,
                              GL_PIXEL_UNPACK_BUFFER, GL_PIXEL_UNPACK_BUFFER_BINDING};

void expect_get(expectation* all, int part, int op, GLenum name) {
  u64 anywhere = 0;
  expect_part(all, part, op, args({name, driver::bits_of(&anywhere)}), pointers::aimed);
}

void expect_gets(expectation* all, int part, const half& of) {
  for (int i = 0; i < all_stores; ++i) {
    expect_get(all, part, i < 2 ? glGetBooleanv_op::op : glGetIntegerv_op::op, stores[i].*of.name);
  }
}

const gl_context& context_of(const expectation& all, int part) {
  return all.part[static_cast<std::size_t>(part)];
}

bool is_zero(const pixel_store& store) {
  return std::all_of(stores, stores + all_stores, [&](const store_name& one) { return store.*one.field == 0; });
}

// Flags are asked for as booleans.
pixel_store told(pixel_store store) {
  store.swap_bytes = store.swap_bytes != 0;
  store.lsb_first = store.lsb_first != 0;
  return store;
}

// Each part is asked and cleared, until one says that there is nothing.
pixel_store expect_save(expectation* all, const half& of) {
  pixel_store saved;
  for (int part = 0; part < all->parts; ++part) {
    saved = told(context_of(*all, part).*of.store);
    expect_gets(all, part, of);
    for (int i = 0; i < all_stores; ++i) {
      if (saved.*stores[i].field) expect_part(all, part, glPixelStorei_op::op, args({stores[i].*of.name, 0}));
    }
    if (is_zero(saved)) break;
  }
  return saved;
}

void expect_restore(expectation* all, const half& of, const pixel_store& saved) {
  for (int i = 0; i < all_stores; ++i) {
    const i32 value = saved.*stores[i].field;
    if (value) expect_parts(all, glPixelStorei_op::op, args({stores[i].*of.name, bits(value)}));
  }
}

GLuint expect_unbind(expectation* all, const half& of) {
  GLuint bound = 0;
  for (int part = 0; part < all->parts; ++part) {
    bound = context_of(*all, part).*of.buffer;
    expect_get(all, part, glGetIntegerv_op::op, of.binding);
    if (!bound) break;
    expect_part(all, part, glBindBuffer_op::op, args({of.target, 0}));
  }
  return bound;
}

// What the first part is asked before the buffer is made.
void expect_questions(expectation* all, int op, const driver::argument_bits& arguments) {
  u64 anywhere = 0;
  if (into_texture_part(op)) {
    expect_part(all, 0, glGetTexLevelParameteriv_op::op,
                args({arguments[0], 0, GL_TEXTURE_INTERNAL_FORMAT, driver::bits_of(&anywhere)}), pointers::aimed);
  }
  expect_get(all, 0, glGetIntegerv_op::op, GL_FRAMEBUFFER_BINDING);
}

}  // namespace

void expect_sequential_copy(expectation* all, const ops::row& row, const driver::argument_bits& arguments) {
  const int op = row.base >= 0 ? row.base : row.op;
  const copy_plan plan = fuzz::plan(*all, op, arguments);
  expect_questions(all, op, arguments);
  if (is_too_large(plan)) return;
  std::vector<u8> buffer = room_for(plan, context_of(*all, 0).unpack);
  const GLuint pack_buffer = expect_unbind(all, pack_half);
  const GLuint unpack_buffer = expect_unbind(all, unpack_half);
  const pixel_store saved_pack = expect_save(all, pack_half);
  expect_read_of_all(all, plan, &buffer);
  pixel_store saved_unpack;
  if (plan.of_pixels) saved_unpack = expect_save(all, unpack_half);
  // Kept: an alias's own entry takes the arguments of the upload.
  const int upload_op = row.base >= 0 ? row.op : plan.upload_op;
  expect_parts(all, upload_op, upload_of(plan, buffer), pointers::aimed);
  // Kept: there is only the pack target to come back to.
  if (pack_buffer) expect_bind(all, GL_PIXEL_PACK_BUFFER, pack_buffer);
  if (unpack_buffer) expect_bind(all, GL_PIXEL_PACK_BUFFER, unpack_buffer);
  expect_restore(all, pack_half, saved_pack);
  if (plan.of_pixels) expect_restore(all, unpack_half, saved_unpack);
}

}  // namespace fuzz
