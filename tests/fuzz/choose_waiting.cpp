// Mapped buffers, fences, queries and reads of pixels: what the program waits for, or hears of later.
#include <algorithm>

#include "wide_stream.h"

namespace fuzz {

namespace {

u64 block(stream* run, u64 bytes) {
  return driver::bits_of(take_block(&run->memory, bytes));
}

// ---- mapped buffers ----

constexpr GLenum targets[] = {GL_ARRAY_BUFFER,        GL_ELEMENT_ARRAY_BUFFER, GL_PIXEL_PACK_BUFFER,
                              GL_PIXEL_UNPACK_BUFFER, GL_COPY_READ_BUFFER,     GL_COPY_WRITE_BUFFER,
                              GL_DRAW_INDIRECT_BUFFER};
constexpr GLbitfield accesses[] = {GL_MAP_READ_BIT,
                                   GL_MAP_WRITE_BIT,
                                   GL_MAP_WRITE_BIT,
                                   GL_MAP_READ_BIT | GL_MAP_WRITE_BIT,
                                   GL_MAP_WRITE_BIT | GL_MAP_INVALIDATE_RANGE_BIT,
                                   GL_MAP_WRITE_BIT | GL_MAP_INVALIDATE_BUFFER_BIT,
                                   GL_MAP_WRITE_BIT | GL_MAP_FLUSH_EXPLICIT_BIT,
                                   GL_MAP_WRITE_BIT | GL_MAP_READ_BIT | GL_MAP_FLUSH_EXPLICIT_BIT,
                                   GL_MAP_WRITE_BIT | GL_MAP_UNSYNCHRONIZED_BIT,
                                   GL_MAP_READ_BIT | GL_MAP_INVALIDATE_RANGE_BIT};
constexpr GLenum whole_accesses[] = {GL_READ_ONLY, GL_WRITE_ONLY, GL_READ_WRITE};

const buffer_object* mapped_one(stream* run) {
  for (const auto& [name, bytes] : run->wide.blocks) {
    const buffer_object* buffer = named_buffer(run->wide.part, name);
    if (buffer && buffer->is_mapped) return buffer;
  }
  return nullptr;
}

// What the program gives up has no contents until it has written them.
void write_mapping(stream* run, const buffer_object& buffer) {
  if (!(buffer.map_access & GL_MAP_WRITE_BIT) || buffer.map_access & GL_MAP_FLUSH_EXPLICIT_BIT) return;
  constexpr GLbitfield gives_up = GL_MAP_INVALIDATE_RANGE_BIT | GL_MAP_INVALIDATE_BUFFER_BIT;
  u8* bytes = run->wide.blocks[buffer.name];
  const bool writes_all = buffer.map_access & gives_up;
  const u32 first = writes_all ? 0 : below(&run->random, static_cast<u32>(buffer.map_length));
  fill_with_noise(&run->memory, bytes + first, buffer.map_length - first);
}

void flush_mapping(stream* run) {
  for (const auto& [name, bytes] : run->wide.blocks) {
    const buffer_object* buffer = named_buffer(run->wide.part, name);
    if (!buffer || !buffer->is_mapped || !(buffer->map_access & GL_MAP_FLUSH_EXPLICIT_BIT)) continue;
    const u32 offset = below(&run->random, static_cast<u32>(buffer->map_length));
    const u64 length = below(&run->random, static_cast<u32>(buffer->map_length) - offset + 1);
    fill_with_noise(&run->memory, bytes + offset, length);
    return call(run, glFlushMappedNamedBufferRange_op::op, {name, offset, length});
  }
}

// With the whole buffer given up, what lies beside the mapping has no contents either.
GLbitfield access_for(stream* run, bool is_whole) {
  const GLbitfield access = one_of(&run->random, accesses);
  return !is_whole && access & GL_MAP_INVALIDATE_BUFFER_BIT ? GLbitfield{GL_MAP_WRITE_BIT} : access;
}

void map(stream* run) {
  source* from = &run->random;
  const GLenum target = one_of(from, targets);
  const GLuint name = any_buffer(run);
  const buffer_object* named = named_buffer(run->wide.part, name);
  const buffer_object* bound = bound_buffer(run->wide.part, target);
  const bool by_name = named && one_in(from, 2);
  const buffer_object* buffer = by_name ? named : bound;
  const u64 size = buffer ? buffer->bytes.size() : 0;
  const bool is_mapped = buffer && buffer->is_mapped;
  if (one_in(from, 4)) {
    const GLenum access = one_of(from, whole_accesses);
    if (by_name) {
      call(run, glMapNamedBuffer_op::op, {name, access});
    } else {
      call(run, glMapBuffer_op::op, {target, access});
    }
  } else {
    const u64 offset = size ? below(from, static_cast<u32>(size)) : 0;
    const u64 length = one_in(from, 10) ? size + 1 : size - offset;
    const u64 taken = offset && one_in(from, 2) ? (length + 1) / 2 : length;
    const GLbitfield access = access_for(run, offset == 0 && taken == size);
    if (by_name) {
      call(run, glMapNamedBufferRange_op::op, {name, offset, taken, access});
    } else {
      call(run, glMapBufferRange_op::op, {target, offset, taken, access});
    }
  }
  const buffer_object* now = by_name ? named_buffer(run->wide.part, name) : bound_buffer(run->wide.part, target);
  if (now && now->is_mapped && !is_mapped && run->failure.empty()) write_mapping(run, *now);
  if (one_in(from, 2)) flush_mapping(run);
}

void unmap(stream* run) {
  const buffer_object* buffer = mapped_one(run);
  const GLenum target = one_of(&run->random, targets);
  if (buffer && one_in(&run->random, 2)) {
    call(run, glUnmapNamedBuffer_op::op, {buffer->name});
  } else if (bound_buffer(run->wide.part, target)) {
    call(run, glUnmapBuffer_op::op, {target});
  }
}

void ask_pointer(stream* run) {
  const GLuint name = any_buffer(run);
  if (name) call(run, glGetNamedBufferPointerv_op::op, {name, GL_BUFFER_MAP_POINTER, block(run, sizeof(void*))});
}

void read_contents(stream* run) {
  const GLuint name = any_unmapped_buffer(run);
  if (!name) return;
  const auto size = static_cast<u32>(named_buffer(run->wide.part, name)->bytes.size());
  const u32 offset = below(&run->random, size);
  const u64 length = below(&run->random, size - offset + 1);
  call(run, glGetNamedBufferSubData_op::op, {name, offset, length, block(run, length)});
}

// ---- fences ----

u64 any_fence(stream* run) {
  if (run->wide.fences.empty()) return 0;
  auto one = run->wide.fences.begin();
  std::advance(one, below(&run->random, static_cast<u32>(run->wide.fences.size())));
  return one->first;
}

// ---- queries ----

constexpr GLenum query_targets[] = {GL_SAMPLES_PASSED, GL_ANY_SAMPLES_PASSED, GL_ANY_SAMPLES_PASSED_CONSERVATIVE,
                                    GL_PRIMITIVES_GENERATED, GL_TIME_ELAPSED};
constexpr GLuint most_queries = 40;

bool is_active(const stream& run, GLenum target) {
  return std::ranges::any_of(run.wide.queries,
                             [=](const auto& one) { return one.second.is_active && one.second.target == target; });
}

// A query keeps the target that it has been begun with first.
void begin_query(stream* run) {
  const GLenum target = one_of(&run->random, query_targets);
  const GLuint id = 1000 + below(&run->random, most_queries) * 8 + target % 8;
  const auto query = run->wide.queries.find(id);
  const bool is_free = query == run->wide.queries.end() || (!query->second.is_active && query->second.target == target);
  if (is_active(*run, target) || !is_free) return;
  constexpr int ops[] = {glBeginQuery_op::op, glBeginQueryARB_op::op};
  if (one_in(&run->random, 3)) {
    call(run, glBeginQueryIndexed_op::op, {target, 0, id});
  } else {
    call(run, one_of(&run->random, ops), {target, id});
  }
}

void end_query(stream* run) {
  const GLenum target = one_of(&run->random, query_targets);
  if (!is_active(*run, target)) return;
  constexpr int ops[] = {glEndQuery_op::op, glEndQueryARB_op::op};
  if (one_in(&run->random, 3)) {
    call(run, glEndQueryIndexed_op::op, {target, 0});
  } else {
    call(run, one_of(&run->random, ops), {target});
  }
}

void count_time(stream* run) {
  call(run, glQueryCounter_op::op, {2000 + below(&run->random, most_queries), GL_TIMESTAMP});
}

void ask_query(stream* run) {
  constexpr int ops[] = {
      glGetQueryObjectiv_op::op,      glGetQueryObjectuiv_op::op,      glGetQueryObjecti64v_op::op,
      glGetQueryObjectui64v_op::op,   glGetQueryObjectivARB_op::op,    glGetQueryObjectuivARB_op::op,
      glGetQueryObjecti64vEXT_op::op, glGetQueryObjectui64vEXT_op::op, glGetQueryObjectuivEXT_op::op};
  constexpr GLenum names[] = {GL_QUERY_RESULT, GL_QUERY_RESULT, GL_QUERY_RESULT_AVAILABLE, GL_QUERY_RESULT_NO_WAIT};
  if (run->wide.queries.empty()) return;
  auto one = run->wide.queries.begin();
  std::advance(one, below(&run->random, static_cast<u32>(run->wide.queries.size())));
  if (one->second.is_active) return;
  call(run, one_of(&run->random, ops), {one->first, one_of(&run->random, names), block(run, sizeof(GLuint64))});
}

// ---- pixels ----

constexpr GLenum formats[] = {GL_RGBA, GL_RGB, GL_BGRA, GL_RED, GL_DEPTH_COMPONENT};
constexpr GLenum types[] = {GL_UNSIGNED_BYTE, GL_FLOAT, GL_UNSIGNED_SHORT, GL_UNSIGNED_INT};

struct rectangle {
  i32 x, y, width, height;
};

rectangle inside_window(stream* run, u32 most) {
  source* from = &run->random;
  const i32 width = 1 + static_cast<i32>(below(from, most));
  const i32 height = 1 + static_cast<i32>(below(from, most));
  return {between(from, 0, run->wide.width - width), between(from, 0, run->wide.height - height), width, height};
}

void read_pixels(stream* run) {
  source* from = &run->random;
  const buffer_object* buffer = run->wide.part.bound[pack_target].get();
  const bool has_buffer = buffer != nullptr;
  if (has_buffer && buffer->is_mapped) return;
  rectangle read = inside_window(run, 40);
  if (!has_buffer && one_in(from, 2)) {
    read.x = between(from, -20, run->wide.width + 5);
    read.y = between(from, -20, run->wide.height + 5);
  }
  const image of{
      .width = read.width, .height = read.height, .format = one_of(from, formats), .type = one_of(from, types)};
  const image_layout layout = lay_out(of, run->wide.part.pack);
  if (!layout.sizable || rows_overlap(layout)) return;
  const u64 pixels = has_buffer ? below(from, 3) * u64{16} : block(run, layout.end);
  call(run, glReadPixels_op::op,
       {bits_of_number(read.x), bits_of_number(read.y), bits_of_number(read.width), bits_of_number(read.height),
        of.format, of.type, pixels});
}

// Into a texture or the window, from the window or an object.
void copy_pixels(stream* run) {
  source* from = &run->random;
  const rectangle area = inside_window(run, 24);
  const u64 x = bits_of_number(area.x);
  const u64 y = bits_of_number(area.y);
  const u64 width = bits_of_number(area.width);
  const u64 height = bits_of_number(area.height);
  const u64 format = one_in(from, 3) ? GL_DEPTH_COMPONENT24 : GL_RGBA8;
  constexpr u64 color_target = 0x0DE0;  // of which the driver says that it has colours
  switch (below(from, 6)) {
    case 0:
      call(run, glCopyPixels_op::op, {x, y, width, height, GL_COLOR});
      return;
    case 1:
      call(run, glCopyTexImage1D_op::op, {GL_TEXTURE_1D, 0, format, x, y, width, 0});
      return;
    case 2:
      call(run, glCopyTexImage2D_op::op, {GL_TEXTURE_2D, 0, format, x, y, width, height, 0});
      return;
    case 3:
      call(run, glCopyTexSubImage1D_op::op, {color_target, 0, 3, x, y, width});
      return;
    case 4:
      call(run, glCopyTexSubImage2D_op::op, {color_target, 0, 3, 5, x, y, width, height});
      return;
    default:
      call(run, glCopyTexSubImage3D_op::op, {color_target, 0, 3, 5, 1, x, y, width, height});
  }
}

}  // namespace

void unmap_all(stream* run) {
  while (const buffer_object* buffer = mapped_one(run)) {
    call(run, glUnmapNamedBuffer_op::op, {buffer->name});
    if (!run->failure.empty()) return;
  }
}

void choose_mapping(stream* run) {
  constexpr void (*choices[])(stream*) = {map,   map,   map,         flush_mapping, flush_mapping,
                                          unmap, unmap, ask_pointer, read_contents};
  one_of(&run->random, choices)(run);
}

void choose_fence(stream* run, bool may_wait) {
  const u64 fence = one_in(&run->random, 12) ? 0x123456 : any_fence(run);
  switch (below(&run->random, may_wait ? 9 : 4)) {
    case 0:
      if (run->wide.fences.size() < 100) call(run, glFenceSync_op::op, {GL_SYNC_GPU_COMMANDS_COMPLETE, 0});
      return;
    case 1:
      call(run, glDeleteSync_op::op, {fence});
      return;
    case 2:
      call(run, glIsSync_op::op, {fence});
      return;
    case 3:
      call(run, glWaitSync_op::op, {fence, 0, ~u64{0}});
      return;
    case 4:
    case 5:
    case 6:
      call(run, glClientWaitSync_op::op, {fence, GL_SYNC_FLUSH_COMMANDS_BIT, below(&run->random, 1000)});
      return;
    default:
      call(run, glGetSynciv_op::op,
           {fence, GL_SYNC_STATUS, 1, one_in(&run->random, 2) ? 0 : block(run, 4), block(run, 4)});
  }
}

void choose_query(stream* run, bool may_wait) {
  switch (below(&run->random, may_wait ? 5 : 3)) {
    case 0:
      return begin_query(run);
    case 1:
      return end_query(run);
    case 2:
      return count_time(run);
    default:
      return ask_query(run);
  }
}

void choose_pixels(stream* run) {
  if (one_in(&run->random, 3)) return copy_pixels(run);
  read_pixels(run);
}

}  // namespace fuzz
