// Reads of pixels. A framebuffer object is whole on every part; of the window each has its share, which it puts into
// the program's memory. Into a pack buffer the window is read by way of memory: gathered there, and put into the buffer
// of every part.
#include <algorithm>
#include <cstdlib>

#include "extended/first_part_reads.h"
#include "sequential/broadcast.h"
#include "sequential/parts/read_pixels_part.h"
#include "startup/config/monitors.h"
#include "threaded/encode_blob.h"

namespace {

struct pixel_read {
  GLint x, y;
  GLsizei width, height;
  GLenum format, type;
  void* pixels;  // or an offset in the pack buffer
};

// Calls `function` with the arguments of a read, into `pixels`.
template <class Function>
void with_arguments(const pixel_read& read, void* pixels, Function function) {
  function(read.x, read.y, read.width, read.height, read.format, read.type, pixels);
}

// ---- the window into a pack buffer ----

struct buffer_range {
  GLintptr offset;
  GLsizeiptr size;  // 0: there is nothing to read, or no room for it
  bool has_room;
};

buffer_range range_of(const pixel_read& read, const __osw_pixel_store& pack, GLint buffer_size) {
  const u64 reach = image_reach(pack, {{read.width, read.height, 1}, 2, read.format, read.type});
  const u64 offset = reinterpret_cast<u64>(read.pixels);
  const u64 room = static_cast<u64>(std::max(buffer_size, 0));
  if (reach && (reach == too_many_bytes || offset > room || reach > room - offset)) return {};
  return {static_cast<GLintptr>(offset), static_cast<GLsizeiptr>(reach), true};
}

// ---- threaded ----

// Behind the parameters of glReadPixels: what is read, and for a window that is gathered its pack buffer.
constexpr u32 whole_slot = everyone_slot<glReadPixels_op> + 1;
constexpr u32 gathered_slot = whole_slot + 1;

struct read_form {
  bool is_whole;
  bool is_everyone_s;
  u32 gathered_into;
};

void push_read(__osw_thread_state* state, const pixel_read& read, void* pixels, const read_form& form) {
  __osw_cmd* cmd = begin_cmd(state);
  cmd->args[everyone_slot<glReadPixels_op>] = form.is_everyone_s;
  cmd->args[whole_slot] = form.is_whole;
  cmd->args[gathered_slot] = form.gathered_into;
  with_arguments(read, pixels, [=](auto... arguments) { push<glReadPixels_op>(state, arguments...); });
}

// GL looks at all arguments of a read of nothing.
void mirror_nothing(const __osw_thread_state* state, pixel_read read) {
  read.width = std::min(read.width, 0);
  read.height = std::min(read.height, 0);
  with_arguments(read, read.pixels, [=](auto... arguments) { mirror<glReadPixels_op>(state, arguments...); });
}

// The error is the application's own context's, whose window is smaller, and would have room for what it clips: it is
// asked for a pixel behind the end of its buffer, which has the size of the others.
void refuse(__osw_thread_state* state, const pixel_read& read, GLint buffer_size) {
  if (!mirrors()) return push_read(state, read, read.pixels, {.is_whole = true, .is_everyone_s = true});
  void* const end = reinterpret_cast<void*>(static_cast<u64>(std::max(buffer_size, 0)));
  sys_gl<glReadPixels_op>(state)(0, 0, 1, 1, read.format, read.type, end);
}

void encode_gathered(__osw_thread_state* state, const pixel_read& read) {
  mirror_nothing(state, read);
  GLint size = 0;
  encode_query<glGetBufferParameteriv_op, void>(GLenum{GL_PIXEL_PACK_BUFFER}, GLenum{GL_BUFFER_SIZE}, &size);
  const buffer_range range = range_of(read, state->glrc->pack_store, size);
  if (!range.has_room) return refuse(state, read, size);
  if (!range.size) return;
  void* block = make_blob(static_cast<u64>(range.size), glReadPixels_op::name);
  if (!block) return;
  // What the read leaves out stays as it is.
  push<glGetBufferSubData_op>(state, GLenum{GL_PIXEL_PACK_BUFFER}, range.offset, range.size, block);
  push_read(state, read, block, {.gathered_into = state->glrc->client_state.pack_buffer});
  push_with_blobs<glBufferSubData_op>(state, array_blob<glBufferSubData_op>, GLenum{GL_PIXEL_PACK_BUFFER}, range.offset,
                                      range.size, block);
}

// ---- sequential ----

// What a context says of the state of its pack buffer.
struct pack_facts {
  GLint buffer = 0;
  GLint size = 0;
  __osw_pixel_store store{};
};

pack_facts ask_first_part(const __osw_thread_state* state) {
  pack_facts facts;
  if (__osw_part_count < 1) return facts;
  auto* get = sys_gl<glGetIntegerv_op>(state);
  __osw_switch_to_part(state, 0);
  get(GL_PIXEL_PACK_BUFFER_BINDING, &facts.buffer);
  if (facts.buffer) {
    sys_gl<glGetBufferParameteriv_op>(state)(GL_PIXEL_PACK_BUFFER, GL_BUFFER_SIZE, &facts.size);
    for (const pixel_store_field& field : pixel_store_fields) {
      GLint value = 0;
      get(field.pack, &value);
      set_field(&facts.store, field, value);
    }
  }
  __osw_switch_to_app(state);
  return facts;
}

void read_share_into(__osw_thread_state* state, i32 part, const pixel_read& read, GLuint pack_buffer, void* block) {
  auto* bind = sys_gl<glBindBuffer_op>(state);
  bind(GL_PIXEL_PACK_BUFFER, 0);
  with_arguments(read, block, [=](auto... arguments) { __osw_read_pixels_part(state, part, arguments...); });
  bind(GL_PIXEL_PACK_BUFFER, pack_buffer);
}

void broadcast_whole(const __osw_thread_state* state, const pixel_read& read, bool is_everyone_s) {
  __osw_for_each_part(state, [=](i32 part) {
    if (part == 0 || is_everyone_s) with_arguments(read, read.pixels, sys_gl<glReadPixels_op>(state));
  });
}

void broadcast_gathered(__osw_thread_state* state, const pixel_read& read, const pack_facts& pack) {
  const buffer_range range = range_of(read, pack.store, pack.size);
  if (!range.size) return broadcast_whole(state, read, true);
  void* block = make_blob(static_cast<u64>(range.size), glReadPixels_op::name);
  if (!block) return;
  __osw_for_each_part(state, [=](i32 part) {
    if (part == 0) sys_gl<glGetBufferSubData_op>(state)(GL_PIXEL_PACK_BUFFER, range.offset, range.size, block);
    read_share_into(state, part, read, static_cast<GLuint>(pack.buffer), block);
  });
  __osw_for_each_part(
      state, [=](i32) { sys_gl<glBufferSubData_op>(state)(GL_PIXEL_PACK_BUFFER, range.offset, range.size, block); });
  free(block);
}

}  // namespace

void changed<glReadPixels_op>::encode(GLint x, GLint y, GLsizei width, GLsizei height, GLenum format, GLenum type,
                                      void* pixels) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  const pixel_read read = {x, y, width, height, format, type, pixels};
  const bool is_whole = state->glrc->read_framebuffer != 0;
  const bool has_buffer = state->glrc->client_state.pack_buffer != 0;
  if (has_buffer && !is_whole) return encode_gathered(state, read);
  if (has_buffer) {
    // The own context's object has the size of the others.
    mirror<glReadPixels_op>(state, x, y, width, height, format, type, pixels);
  } else {
    mirror_nothing(state, read);
  }
  push_read(state, read, pixels, {.is_whole = is_whole, .is_everyone_s = has_buffer});
}

void changed<glReadPixels_op>::replay(const replay_scene& on, GLint x, GLint y, GLsizei width, GLsizei height,
                                      GLenum format, GLenum type, void* pixels) {
  if (on.cmd->args[whole_slot]) return replay_read<glReadPixels_op>(on, x, y, width, height, format, type, pixels);
  const auto pack_buffer = from_slot<GLuint>(on.cmd->args[gathered_slot]);
  auto* bind = entry_in<glBindBuffer_op>(on.system);
  if (pack_buffer) bind(GL_PIXEL_PACK_BUFFER, 0);
  glReadPixels_op::replay(on, x, y, width, height, format, type, pixels);
  if (pack_buffer) bind(GL_PIXEL_PACK_BUFFER, pack_buffer);
}

void changed<glReadPixels_op>::broadcast(GLint x, GLint y, GLsizei width, GLsizei height, GLenum format, GLenum type,
                                         void* pixels) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  const pixel_read read = {x, y, width, height, format, type, pixels};
  const pack_facts pack = ask_first_part(state);
  if (state->glrc->read_framebuffer) return broadcast_whole(state, read, pack.buffer != 0);
  if (pack.buffer) return broadcast_gathered(state, read, pack);
  glReadPixels_op::broadcast(x, y, width, height, format, type, pixels);
}
