// glArrayElement, unrolled into the immediate mode calls that it stands for.
#include "threaded/array_element.h"

#include "threaded/capture.h"
#include "threaded/encoders.h"

namespace {

constexpr u32 unrolled = 2;

// Enters the encoder of a call that takes the vector alone, as the application's own call would.
template <class Op>
void call_vector(const __osw_client_array&, const void* data) {
  call_as_base(encoder<Op>(), data);
}

template <class Op>
void call_multi_tex_coord(const __osw_client_array& array, const void* data) {
  call_as_base(encoder<Op>(), static_cast<GLenum>(GL_TEXTURE0 + array.index - tex_coord_array::index), data);
}

template <class Op>
void call_attribute(const __osw_client_array& array, const void* data) {
  call_as_base(encoder<Op>(), array.index - first_attribute_index, data);
}

// The calls of one size by component type; null where there is none.
struct calls_by_type {
  vector_call byte_, ubyte_, short_, ushort_, int_, uint_, float_, double_;
};

vector_call of_type(const calls_by_type& calls, GLenum type) {
  switch (type) {
    case GL_BYTE:
      return calls.byte_;
    case GL_UNSIGNED_BYTE:
      return calls.ubyte_;
    case GL_SHORT:
      return calls.short_;
    case GL_UNSIGNED_SHORT:
      return calls.ushort_;
    case GL_INT:
      return calls.int_;
    case GL_UNSIGNED_INT:
      return calls.uint_;
    case GL_FLOAT:
      return calls.float_;
    case GL_DOUBLE:
      return calls.double_;
    default:
      return nullptr;
  }
}

// `calls` has the rows of the sizes from `smallest` on.
template <int count>
vector_call of_size(const calls_by_type (&calls)[count], i32 smallest, const __osw_client_array& array) {
  if (array.size < smallest || array.size >= smallest + count) return nullptr;
  return of_type(calls[array.size - smallest], array.type);
}

#define SIDF(call, stem) \
  { nullptr, nullptr, call<stem##sv_op>, nullptr, call<stem##iv_op>, nullptr, call<stem##fv_op>, call<stem##dv_op> }
#define ALL_TYPES(call, stem)                                                                        \
  {                                                                                                  \
    call<stem##bv_op>, call<stem##ubv_op>, call<stem##sv_op>, call<stem##usv_op>, call<stem##iv_op>, \
        call<stem##uiv_op>, call<stem##fv_op>, call<stem##dv_op>                                     \
  }
#define SFD(call, stem) \
  { nullptr, nullptr, call<stem##sv_op>, nullptr, nullptr, nullptr, call<stem##fv_op>, call<stem##dv_op> }

const calls_by_type vertex_calls[] = {SIDF(call_vector, glVertex2), SIDF(call_vector, glVertex3),
                                      SIDF(call_vector, glVertex4)};
const calls_by_type color_calls[] = {ALL_TYPES(call_vector, glColor3), ALL_TYPES(call_vector, glColor4)};
const calls_by_type tex_coord_calls[] = {
    SIDF(call_multi_tex_coord, glMultiTexCoord1), SIDF(call_multi_tex_coord, glMultiTexCoord2),
    SIDF(call_multi_tex_coord, glMultiTexCoord3), SIDF(call_multi_tex_coord, glMultiTexCoord4)};
const calls_by_type attribute_calls[] = {SFD(call_attribute, glVertexAttrib1), SFD(call_attribute, glVertexAttrib2),
                                         SFD(call_attribute, glVertexAttrib3),
                                         ALL_TYPES(call_attribute, glVertexAttrib4)};
const calls_by_type secondary_color_calls = ALL_TYPES(call_vector, glSecondaryColor3);
const calls_by_type normal_calls = {
    call_vector<glNormal3bv_op>, nullptr, call_vector<glNormal3sv_op>, nullptr,
    call_vector<glNormal3iv_op>, nullptr, call_vector<glNormal3fv_op>, call_vector<glNormal3dv_op>};
const calls_by_type index_calls = {
    nullptr, call_vector<glIndexubv_op>, call_vector<glIndexsv_op>, nullptr, call_vector<glIndexiv_op>,
    nullptr, call_vector<glIndexfv_op>,  call_vector<glIndexdv_op>};
const calls_by_type fog_coord_calls = {
    nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, call_vector<glFogCoordfv_op>, call_vector<glFogCoorddv_op>};
const calls_by_type normalized_calls = {call_attribute<glVertexAttrib4Nbv_op>,
                                        call_attribute<glVertexAttrib4Nubv_op>,
                                        call_attribute<glVertexAttrib4Nsv_op>,
                                        call_attribute<glVertexAttrib4Nusv_op>,
                                        call_attribute<glVertexAttrib4Niv_op>,
                                        call_attribute<glVertexAttrib4Nuiv_op>,
                                        nullptr,
                                        nullptr};

#undef SIDF
#undef ALL_TYPES
#undef SFD

vector_call attribute_call(const __osw_client_array& array) {
  if (!array.normalized) return of_size(attribute_calls, 1, array);
  return array.size == 4 ? of_type(normalized_calls, array.type) : nullptr;
}

vector_call element_call(vertex_array, const __osw_client_array& array) {
  return of_size(vertex_calls, 2, array);
}
vector_call element_call(color_array, const __osw_client_array& array) {
  return of_size(color_calls, 3, array);
}
vector_call element_call(normal_array, const __osw_client_array& array) {
  return of_type(normal_calls, array.type);
}
vector_call element_call(tex_coord_array, const __osw_client_array& array) {
  return of_size(tex_coord_calls, 1, array);
}
vector_call element_call(fog_coord_array, const __osw_client_array& array) {
  return of_type(fog_coord_calls, array.type);
}
vector_call element_call(secondary_color_array, const __osw_client_array& array) {
  return of_type(secondary_color_calls, array.type);
}
vector_call element_call(index_array, const __osw_client_array& array) {
  return of_type(index_calls, array.type);
}
vector_call element_call(edge_flag_array, const __osw_client_array&) {
  return call_vector<glEdgeFlagv_op>;
}

// Result: 0 when no array is in application memory, 1 when some are and some are not, 2 when the element has been sent.
u32 __osw_array_element(const __osw_thread_state* state, GLint i) {
  const __osw_client_state& client_state = state->glrc->client_state;
  const u32 enabled = client_state.enabled_mask;
  if (!enabled || enabled == client_state.buffered_mask) return 0;
  if (client_state.buffered_mask) return 1;
  const bool has_attribute_0 = enabled & 1u << first_attribute_index;
  for (u32 mask = enabled; mask; mask &= mask - 1) {
    const __osw_client_array& array = client_state.arrays[__builtin_ctz(mask)];
    if (vector_call call = call_for(array, has_attribute_0)) call(array, element_of(array, i));
  }
  return unrolled;
}

}  // namespace

vector_call call_for(const __osw_client_array& array, bool has_attribute_0) {
  if (array.index >= first_attribute_index) return attribute_call(array);
  if (array.array == GL_VERTEX_ARRAY && has_attribute_0) return element_call(normal_array(), array);
  vector_call call = nullptr;
  for_client_array(array.array, [&]<class Array>() { call = element_call(Array(), array); });
  return call;
}

const void* element_of(const __osw_client_array& array, GLint i) {
  const i32 packed = array.size * static_cast<i32>(__osw_gl_type_size(array.type));
  const auto stride = static_cast<int64_t>(array.stride ? array.stride : packed);
  return static_cast<const u8*>(array.pointer) + i * stride;
}

void glArrayElement_op::encode(GLint i) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  mirror<glArrayElement_op>(state, i);
  const u32 sent = __osw_array_element(state, i);
  if (sent != unrolled) push<glArrayElement_op>(state, i);
  if (sent) __osw_send_sync_cmd(state);
}
