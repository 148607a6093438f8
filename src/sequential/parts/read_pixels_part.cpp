#include "sequential/parts/read_pixels_part.h"

#include "wgl/records/pbuffer.h"
#include "wgl/records/window_mapping.h"

namespace {

// What is read from: the application's whole area, and the part's share of it, with the origin at the top left.
struct source_area {
  RECT client;
  RECT part;
  u32 visible;
};

source_area source_area_of(const __osw_thread_state* state, i32 part) {
  if (const __osw_window_mapping* mapping = relaxed_load(state->window_mapping)) {
    const __osw_child_part& child = mapping->parts[part];
    return {__osw_load_rect(mapping->client_rect), __osw_load_rect(child.part_rect), relaxed_load(child.visible)};
  }
  RECT whole{};
  if (const __osw_pbuffer* pbuffer = relaxed_load(state->pbuffer)) whole = {0, 0, pbuffer->width, pbuffer->height};
  return {whole, whole, 1};
}

// The pack state that places a share in the whole image.
struct pack_placement {
  GLint row_length;
  GLint image_height;
  GLint skip_rows;
  GLint skip_pixels;
};

pack_placement get_placement(const __osw_proc* sys_gl) {
  auto* get = entry_in<glGetIntegerv_op>(sys_gl);
  pack_placement placement{};
  get(GL_PACK_ROW_LENGTH, &placement.row_length);
  get(GL_PACK_IMAGE_HEIGHT, &placement.image_height);
  get(GL_PACK_SKIP_ROWS, &placement.skip_rows);
  get(GL_PACK_SKIP_PIXELS, &placement.skip_pixels);
  return placement;
}

void set_placement(const __osw_proc* sys_gl, const pack_placement& placement) {
  auto* set = entry_in<glPixelStorei_op>(sys_gl);
  set(GL_PACK_ROW_LENGTH, placement.row_length);
  set(GL_PACK_IMAGE_HEIGHT, placement.image_height);
  set(GL_PACK_SKIP_ROWS, placement.skip_rows);
  set(GL_PACK_SKIP_PIXELS, placement.skip_pixels);
}

// Coordinates are the application's and may be anything, so the sums wrap instead of overflowing.
i32 sum(i32 a, i32 b) {
  return static_cast<i32>(static_cast<u32>(a) + static_cast<u32>(b));
}
i32 difference(i32 a, i32 b) {
  return static_cast<i32>(static_cast<u32>(a) - static_cast<u32>(b));
}

}  // namespace

void __osw_read_pixels_part(__osw_thread_state* state, i32 part, i32 x, i32 y, i32 width, i32 height, u32 format,
                            u32 type, void* pixels) {
  const source_area from = source_area_of(state, part);
  if (width < 1 || height < 1) return;

  const i32 bottom = difference(difference(from.client.bottom, from.client.top), y);
  const RECT source = {x, difference(bottom, height), sum(x, width), bottom};
  RECT share;
  const bool touched = IntersectRect(&share, &source, &from.part);
  if (!from.visible || !touched) return;

  const __osw_proc* sys_gl = relaxed_load(state->sys_gl);
  const pack_placement saved = get_placement(sys_gl);
  set_placement(
      sys_gl, {saved.row_length >= 1 ? saved.row_length : width, saved.image_height >= 1 ? saved.image_height : height,
               saved.skip_rows + (source.bottom - share.bottom), saved.skip_pixels + (share.left - source.left)});
  entry_in<glReadPixels_op>(sys_gl)(share.left - from.part.left, from.part.bottom - share.bottom,
                                    share.right - share.left, share.bottom - share.top, format, type, pixels);
  set_placement(sys_gl, saved);
}
