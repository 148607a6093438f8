// glArrayElement on the threaded path, unrolled into the immediate mode calls that it stands for. The one that makes
// the vertex comes last, so that the vertex has the others' values.
#include "threaded/array_element.h"

#include "extended/vertices.h"
#include "ops/client_arrays.h"

namespace {

constexpr u64 vertex_bit = u64{1} << vertex_array::index;
constexpr u64 attribute_0_bit = u64{1} << first_attribute_array;

template <class Op>
void call_integers(const __osw_client_array& array, const void* data) {
  using values = typename prototype<typename Op::type>::parameters;
  encoder<extended_form<Op>>()(array.index - first_attribute_index, static_cast<std::tuple_element_t<1, values>>(data));
}

struct integer_calls {
  vector_call int_, uint_;
};
const integer_calls attribute_calls_by_size[] = {
    {call_integers<glVertexAttribI1iv_op>, call_integers<glVertexAttribI1uiv_op>},
    {call_integers<glVertexAttribI2iv_op>, call_integers<glVertexAttribI2uiv_op>},
    {call_integers<glVertexAttribI3iv_op>, call_integers<glVertexAttribI3uiv_op>},
    {call_integers<glVertexAttribI4iv_op>, call_integers<glVertexAttribI4uiv_op>}};

vector_call integer_call(const __osw_client_array& array) {
  if (array.size < 1 || array.size > 4) return nullptr;
  const integer_calls& calls = attribute_calls_by_size[array.size - 1];
  if (array.type == GL_INT) return calls.int_;
  return array.type == GL_UNSIGNED_INT ? calls.uint_ : nullptr;
}

vector_call call_of(const __osw_client_array& array) {
  switch (array.kind) {
    case array_kind::floats:
      return call_for(array, false);
    case array_kind::integers:
      return integer_call(array);
    case array_kind::doubles:
      return nullptr;
  }
  return nullptr;
}

const __osw_client_array& array_at(const __osw_thread_state* state, u64 arrays) {
  return state->glrc->client_state.arrays[__builtin_ctzll(arrays)];
}

bool has_calls(const __osw_thread_state* state, u64 arrays) {
  for (u64 rest = arrays; rest; rest &= rest - 1) {
    if (!call_of(array_at(state, rest))) return false;
  }
  return true;
}

void send_element(const __osw_thread_state* state, u64 arrays, GLint i) {
  for (u64 rest = arrays; rest; rest &= rest - 1) {
    const __osw_client_array& array = array_at(state, rest);
    call_of(array)(array, element_of(array, i));
  }
}

// Sends the calls that the element stands for. Result: whether there are such calls; none has been sent otherwise.
bool unroll(const __osw_thread_state* state, GLint i) {
  const array_object& object = *bound_array_object(&state->glrc->arrays);
  const u64 enabled = object.enabled;
  if ((enabled & object.in_buffers) || !measure_arrays_in_memory(state) || !has_calls(state, enabled)) return false;
  const u64 position = enabled & attribute_0_bit ? attribute_0_bit : enabled & vertex_bit;
  send_element(state, enabled & ~(vertex_bit | attribute_0_bit), i);
  send_element(state, position, i);
  return true;
}

template <class Op>
void encode_element(GLint i) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  const bool reads_memory = reads_vertices_in_memory(state);
  if (reads_memory && unroll(state, i)) return;
  mirror<Op>(state, i);
  push<Op>(state, i);
  if (reads_memory) __osw_send_sync_cmd(state);
}

}  // namespace

void changed<glArrayElement_op>::encode(GLint i) {
  encode_element<changed>(i);
}

void changed<glArrayElementEXT_op>::encode(GLint i) {
  encode_element<changed>(i);
}
