// Images that a handler moves for itself are moved without gaps and unchanged, whatever state the program has set for
// its own. Issuing thread.
#pragma once

#include <iterator>

#include "extended/path_calls.h"
#include "wgl/records/glrc.h"

// A part of the state that changes values on their way, and its default.
struct transfer_field {
  GLenum name;
  GLfloat plain;
};
constexpr transfer_field transfer_fields[] = {
    {GL_MAP_COLOR, 0},   {GL_MAP_STENCIL, 0}, {GL_INDEX_SHIFT, 0}, {GL_INDEX_OFFSET, 0}, {GL_RED_SCALE, 1},
    {GL_GREEN_SCALE, 1}, {GL_BLUE_SCALE, 1},  {GL_ALPHA_SCALE, 1}, {GL_DEPTH_SCALE, 1},  {GL_RED_BIAS, 0},
    {GL_GREEN_BIAS, 0},  {GL_BLUE_BIAS, 0},   {GL_ALPHA_BIAS, 0},  {GL_DEPTH_BIAS, 0},
};
constexpr int transfer_field_count = std::size(transfer_fields);

// Rows follow each other without gaps.
constexpr __osw_pixel_store plain_store = {.alignment = 1};

// The program's state, while another is in force.
struct saved_transfers {
  __osw_pixel_store pack{};
  __osw_pixel_store unpack{};
  GLint pack_buffer = 0;
  GLint unpack_buffer = 0;
  GLfloat fields[transfer_field_count] = {};
};

template <class Calls>
saved_transfers look_at_transfers(const __osw_thread_state* state) {
  saved_transfers found{.pack = state->glrc->pack_store, .unpack = state->glrc->unpack_store};
  for (int i = 0; i < transfer_field_count; ++i) found.fields[i] = transfer_fields[i].plain;
  Calls::ask(state, [&](auto get) {
    if constexpr (!Calls::keeps_pack_store) {
      for (const pixel_store_field& field : pixel_store_fields) {
        GLint value = get_field(plain_store, field);
        get(glGetIntegerv_op(), field.pack, &value);
        set_field(&found.pack, field, value);
      }
    }
    get(glGetIntegerv_op(), GLenum{GL_PIXEL_PACK_BUFFER_BINDING}, &found.pack_buffer);
    get(glGetIntegerv_op(), GLenum{GL_PIXEL_UNPACK_BUFFER_BINDING}, &found.unpack_buffer);
    if (state->glrc->is_core) return;
    for (int i = 0; i < transfer_field_count; ++i) get(glGetFloatv_op(), transfer_fields[i].name, &found.fields[i]);
  });
  return found;
}

// Sets the fields that differ.
template <class Calls>
void change_store(const __osw_thread_state* state, GLenum pixel_store_field::*name, const __osw_pixel_store& from,
                  const __osw_pixel_store& to) {
  for (const pixel_store_field& field : pixel_store_fields) {
    const GLint value = get_field(to, field);
    if (get_field(from, field) != value) Calls::template call<glPixelStorei_op>(state, field.*name, value);
  }
}

template <class Calls>
void change_stores(const __osw_thread_state* state, const saved_transfers& saved, bool to_plain) {
  const __osw_pixel_store& pack = saved.pack;
  const __osw_pixel_store& unpack = saved.unpack;
  change_store<Calls>(state, &pixel_store_field::pack, to_plain ? pack : plain_store, to_plain ? plain_store : pack);
  change_store<Calls>(state, &pixel_store_field::unpack, to_plain ? unpack : plain_store,
                      to_plain ? plain_store : unpack);
}

template <class Calls>
void bind_pixel_buffers(const __osw_thread_state* state, const saved_transfers& saved, bool to_none) {
  const GLuint pack = to_none ? 0 : static_cast<GLuint>(saved.pack_buffer);
  const GLuint unpack = to_none ? 0 : static_cast<GLuint>(saved.unpack_buffer);
  if (saved.pack_buffer) Calls::template call<glBindBuffer_op>(state, GLenum{GL_PIXEL_PACK_BUFFER}, pack);
  if (saved.unpack_buffer) Calls::template call<glBindBuffer_op>(state, GLenum{GL_PIXEL_UNPACK_BUFFER}, unpack);
}

template <class Calls>
void change_values(const __osw_thread_state* state, const saved_transfers& saved, bool to_plain) {
  for (int i = 0; i < transfer_field_count; ++i) {
    const auto [name, plain] = transfer_fields[i];
    if (saved.fields[i] == plain) continue;
    Calls::template call<glPixelTransferf_op>(state, name, to_plain ? plain : saved.fields[i]);
  }
}

// From now on images lie in memory, without gaps, and their values stay as they are.
template <class Calls>
saved_transfers begin_plain_transfers(const __osw_thread_state* state) {
  const saved_transfers saved = look_at_transfers<Calls>(state);
  bind_pixel_buffers<Calls>(state, saved, true);
  change_stores<Calls>(state, saved, true);
  change_values<Calls>(state, saved, true);
  return saved;
}

// The program's state is in force again: first as far as it changes values, then the rest.
template <class Calls>
void end_plain_values(const __osw_thread_state* state, const saved_transfers& saved) {
  change_values<Calls>(state, saved, false);
}
template <class Calls>
void end_plain_places(const __osw_thread_state* state, const saved_transfers& saved) {
  change_stores<Calls>(state, saved, false);
  bind_pixel_buffers<Calls>(state, saved, false);
}
