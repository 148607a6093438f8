// Noting what calls change of the arrays of the context that is current. On the issuing thread, on the threaded path.
#pragma once

#include "threaded/client_arrays.h"

// The array object that is bound.
array_object* array_object_in_force(const __osw_thread_state* state);

// An array object that a call names.
array_object* array_object_named(const __osw_thread_state* state, GLuint name);

// One pointer call. A stride below 0 is one that GL refuses, and changes nothing.
struct noted_pointer {
  u32 array;  // the client array's enum, or the attribute's number
  bool is_attribute;
  array_kind kind;
  i32 size;
  u32 type;
  u8 normalized;
  i32 stride;
  const void* pointer;
};
void note_pointer(const __osw_thread_state* state, const noted_pointer& call);

// A client array, by its enum, or an attribute is switched.
void note_client_switch(const __osw_thread_state* state, GLenum array, bool on);
void note_attribute_switch(array_object* object, GLuint attribute, bool on);

// The context's binding that a target names, or null for one that is not noted.
u32* noted_binding(const __osw_thread_state* state, GLenum target);

// These buffers, which are about to be deleted, are bound nowhere in the context any more.
void note_deleted_buffers(const __osw_thread_state* state, GLsizei count, const GLuint* buffers);
