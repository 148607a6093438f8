// How many values the calls that take a pname read, and what the calls of several arrays read, by GL's rules.
#pragma once

#include "gl_model.h"

namespace fuzz {

// A pname that the function takes, chosen by a number; now and then one that GL refuses.
GLenum pname_for(const ops::row& row, u32 choice);

// Whether the call takes as many values as a pname says.
bool takes_pname(const ops::row& row);

// Of such a call.
u32 values_by_pname(const ops::row& row, const driver::argument_bits& arguments);

// Where a call that takes a pname has it.
u32 place_of_pname(const ops::row& row);

// Bytes of the array that pointer argument `at` leads to, of a call of several arrays.
u64 bytes_of_array(const ops::row& row, u32 at, const driver::argument_bits& arguments);

// Bytes of one pixel of a clearing call.
u64 bytes_of_texel(const ops::row& row, const driver::argument_bits& arguments);

// The digest of what the call reads, where it is one of these. Result: whether it is.
bool digest_of_arguments(const ops::row& row, const driver::argument_bits& arguments, u64* digest);

}  // namespace fuzz
