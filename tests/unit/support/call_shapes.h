// What each GL op reads of the application's memory: which argument points at it, and what says how much it is. The one
// table of this for all who make calls of every op; it is written from the functions' own definitions, not from the
// library.
#pragma once

#include <string>
#include <vector>

#include "support/op_rows.h"

namespace ops {

enum class reads {
  unknown,    // an op with an encoder of its own that the table lacks
  elsewhere,  // by a handler that has tests of its own, whose calls are unlike the program's
  nothing,
  some_bytes,  // of each pointer, the same number for every call
  vectors,     // a number of elements that the function's name says
  parameters,  // as many as the pname says
  items,       // as many as an argument says
  image,
  sized,  // bytes that an argument says
  lists,
  stipple,
  text,
  source,  // strings, of which an argument says how many
  texel,   // one pixel of the format and the type before it
  arrays,  // several, of as many items as an argument says
  array_draw,
  element_draw,
  array_element
};

struct call_shape {
  reads what = reads::nothing;
  u32 count_at = 0;  // argument: a count, the first index, the pname, or the first size of an image
  u32 item_bytes = 0;
  u32 data_at = 0;       // argument
  int dimensions = 0;    // of an image
  bool unpacks = false;  // with an unpack buffer bound the pointer is an offset
};

// Of an op that stands for another one: the other's.
const call_shape& shape_of(int op);

// The names of the ops whose shape is unknown. A test that makes calls by their shapes first makes sure of none.
std::vector<std::string> ops_without_shape();

// How many values a pname of the sized parameter calls takes.
enum class parameter_set { light, light_model, material, tex_gen, tex_env, tex, fog, point, patch };
u32 values_of(parameter_set set, GLenum pname);
parameter_set set_of(const row& row);

constexpr u32 some_bytes = 16;
constexpr u32 stipple_bytes = 1024;  // what the library copies; the pattern itself is shorter

}  // namespace ops
