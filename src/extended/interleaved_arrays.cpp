// glInterleavedArrays on the threaded path: what it sets of each array is noted as if that had been set by itself.
#include "extended/array_notes.h"
#include "ops/client_arrays.h"
#include "threaded/encoders.h"

namespace {

// How many components there are of each; of the colour 4 of `color_type`, or 3. They lie in this order.
struct interleaved_format {
  GLenum format;
  i32 tex_coords;
  i32 colors;
  GLenum color_type;
  i32 normals;
  i32 vertices;
};

constexpr interleaved_format formats[] = {{GL_V2F, 0, 0, GL_FLOAT, 0, 2},
                                          {GL_V3F, 0, 0, GL_FLOAT, 0, 3},
                                          {GL_C4UB_V2F, 0, 4, GL_UNSIGNED_BYTE, 0, 2},
                                          {GL_C4UB_V3F, 0, 4, GL_UNSIGNED_BYTE, 0, 3},
                                          {GL_C3F_V3F, 0, 3, GL_FLOAT, 0, 3},
                                          {GL_N3F_V3F, 0, 0, GL_FLOAT, 3, 3},
                                          {GL_C4F_N3F_V3F, 0, 4, GL_FLOAT, 3, 3},
                                          {GL_T2F_V3F, 2, 0, GL_FLOAT, 0, 3},
                                          {GL_T4F_V4F, 4, 0, GL_FLOAT, 0, 4},
                                          {GL_T2F_C4UB_V3F, 2, 4, GL_UNSIGNED_BYTE, 0, 3},
                                          {GL_T2F_C3F_V3F, 2, 3, GL_FLOAT, 0, 3},
                                          {GL_T2F_N3F_V3F, 2, 0, GL_FLOAT, 3, 3},
                                          {GL_T2F_C4F_N3F_V3F, 2, 4, GL_FLOAT, 3, 3},
                                          {GL_T4F_C4F_N3F_V4F, 4, 4, GL_FLOAT, 3, 4}};

const interleaved_format* find_format(GLenum format) {
  for (const interleaved_format& one : formats) {
    if (one.format == format) return &one;
  }
  return nullptr;
}

i32 bytes_of_components(i32 components, GLenum type) {
  return components * (type == GL_FLOAT ? i32{sizeof(GLfloat)} : i32{sizeof(GLubyte)});
}

// An address may be an offset in a buffer, and 0.
const u8* behind(const u8* at, i32 bytes) {
  return reinterpret_cast<const u8*>(reinterpret_cast<u64>(at) + static_cast<u64>(bytes));
}

// Notes the array of so many components at an address, or that there is none. Result: the address behind it.
template <class Array>
const u8* note_array(const __osw_thread_state* state, i32 components, GLenum type, i32 stride, const u8* at) {
  note_client_switch(state, Array::array, components != 0);
  if (!components) return at;
  note_pointer(state, {Array::array, false, array_kind::floats, components, type, 0, stride, at});
  return behind(at, bytes_of_components(components, type));
}

// A driver may leave an array enabled that the standard says it disables.
template <class Array>
void note_left_over(const __osw_thread_state* state) {
  const u64 enabled = array_object_in_force(state)->enabled;
  if (enabled >> Array::index & 1) note_client_switch(state, Array::array, encoder<glIsEnabled_op>()(Array::array));
}

void note_arrays(const __osw_thread_state* state, const interleaved_format& format, i32 stride, const void* pointer) {
  const i32 packed = bytes_of_components(format.tex_coords + format.normals + format.vertices, GL_FLOAT) +
                     bytes_of_components(format.colors, format.color_type);
  const i32 step = stride ? stride : packed;
  const auto* at = static_cast<const u8*>(pointer);
  at = note_array<tex_coord_array>(state, format.tex_coords, GL_FLOAT, step, at);
  at = note_array<color_array>(state, format.colors, format.color_type, step, at);
  at = note_array<normal_array>(state, format.normals, GL_FLOAT, step, at);
  note_array<vertex_array>(state, format.vertices, GL_FLOAT, step, at);
  note_client_switch(state, GL_EDGE_FLAG_ARRAY, false);
  note_client_switch(state, GL_INDEX_ARRAY, false);
}

}  // namespace

void changed<glInterleavedArrays_op>::encode(GLenum format, GLsizei stride, const void* pointer) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  mirror<changed>(state, format, stride, pointer);
  push<changed>(state, format, stride, pointer);
  const interleaved_format* found = stride < 0 ? nullptr : find_format(format);
  if (!found) return;
  note_arrays(state, *found, stride, pointer);
  note_left_over<secondary_color_array>(state);
  note_left_over<fog_coord_array>(state);
}
