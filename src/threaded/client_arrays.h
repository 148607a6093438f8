// What the issuing thread knows of the client arrays and buffer bindings of its context. On the thread that has the
// context current.
#pragma once

#include "wgl/records/client_state.h"
#include "wgl/records/glrc.h"

// The index of an array: 0 to 14 for the client arrays, the texture coordinates of the active client unit among them,
// attribute + 16 for vertex attributes, 32 for anything unknown. `value` is the array's enum or the attribute's number.
u32 __osw_array_index(const __osw_thread_state* state, const __osw_client_state* client_state, u32 value,
                      bool is_attribute);

// Records one pointer call. An attribute of 16 or above is not recorded.
void __osw_set_client_array(const __osw_thread_state* state, __osw_client_state* client_state, u32 value,
                            bool is_attribute, i32 size, u32 type, u8 normalized, i32 stride, const void* pointer);

// The binding that the target names, or null for one that is not tracked.
u32* binding_of(__osw_client_state* client_state, GLenum target);
