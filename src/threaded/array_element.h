// The immediate mode calls that stand for one element of an array. On the issuing thread.
#pragma once

#include "threaded/client_arrays.h"

using vector_call = void (*)(const __osw_client_array& array, const void* data);

// The call that sends one element of the array, or null when no call takes its size and type. With attribute 0 enabled
// the vertex array's data go out as a normal.
vector_call call_for(const __osw_client_array& array, bool has_attribute_0);

// Where the array has element `i`.
const void* element_of(const __osw_client_array& array, GLint i);
