// glPushClientAttrib and glPopClientAttrib on the threaded path: what is known of the client state goes with them.
#include <cstdlib>

#include "dispatch/report.h"
#include "extended/array_notes.h"
#include "threaded/encoders.h"

namespace {

void save(__osw_glrc* glrc, GLbitfield mask) {
  client_attrib_stack* stack = &glrc->client_attribs;
  if (stack->depth == max_client_attribs) return;
  auto* saved = static_cast<saved_client_state*>(malloc(sizeof(saved_client_state)));
  stack->saved[stack->depth++] = saved;
  if (!saved) return __osw_report(severity_error, "no memory for what glPushClientAttrib saves\n");
  *saved = {mask, glrc->pack_store, glrc->unpack_store, glrc->client_state, *bound_array_object(&glrc->arrays)};
}

// What GL has bound after a pop: it leaves out what was deleted since the push. `believed` where nobody can be asked.
u32 ask_binding(const __osw_thread_state* state, GLenum name, u32 believed) {
  auto value = static_cast<GLint>(believed);
  if (believed && mirrors()) sys_gl<glGetIntegerv_op>(state)(name, &value);
  return static_cast<u32>(value);
}

void restore_pixel_store(const __osw_thread_state* state, const saved_client_state& saved) {
  __osw_glrc* glrc = state->glrc;
  glrc->pack_store = saved.pack_store;
  glrc->unpack_store = saved.unpack_store;
  glrc->client_state.pack_buffer = ask_binding(state, GL_PIXEL_PACK_BUFFER_BINDING, saved.client_state.pack_buffer);
  glrc->client_state.unpack_buffer =
      ask_binding(state, GL_PIXEL_UNPACK_BUFFER_BINDING, saved.client_state.unpack_buffer);
}

// Puts back what is known of an object, which keeps its place.
void restore_object(array_object* object, const array_object& saved) {
  array_object* next = object->next;
  *object = saved;
  object->next = next;
}

void restore_arrays(const __osw_thread_state* state, const saved_client_state& saved) {
  __osw_glrc* glrc = state->glrc;
  __osw_client_state* client_state = &glrc->client_state;
  client_state->client_texture = saved.client_state.client_texture;
  client_state->array_buffer = ask_binding(state, GL_ARRAY_BUFFER_BINDING, saved.client_state.array_buffer);
  const u32 name = saved.bound.name;
  if (name && !has_array_object(glrc->arrays, name)) return;
  array_object* object = named_array_object(&glrc->arrays, name);
  glrc->arrays.current = object;
  restore_object(object, saved.bound);
  object->element_buffer = ask_binding(state, GL_ELEMENT_ARRAY_BUFFER_BINDING, saved.bound.element_buffer);
  if (!name) memcpy(client_state->arrays, saved.client_state.arrays, sizeof client_state->arrays);
}

// What was not saved is not known: draws are waited for from now on.
void restore(const __osw_thread_state* state) {
  client_attrib_stack* stack = &state->glrc->client_attribs;
  if (!stack->depth) return;
  saved_client_state* saved = stack->saved[--stack->depth];
  if (!saved) {
    array_object_in_force(state)->is_unknown = true;
    return;
  }
  if (saved->mask & GL_CLIENT_PIXEL_STORE_BIT) restore_pixel_store(state, *saved);
  if (saved->mask & GL_CLIENT_VERTEX_ARRAY_BIT) restore_arrays(state, *saved);
  free(saved);
}

}  // namespace

void changed<glPushClientAttrib_op>::encode(GLbitfield mask) {
  __osw_thread_state* state = __osw_fetch_thread_state();
  mirror<changed>(state, mask);
  save(state->glrc, mask);
  push<changed>(state, mask);
}

void changed<glPopClientAttrib_op>::encode() {
  __osw_thread_state* state = __osw_fetch_thread_state();
  mirror<changed>(state);
  restore(state);
  push<changed>(state);
}
