// The GL op list as data, for tests that loop over it: what an op's prototype says of its parameters, and a call of the
// op with arguments given as bits.
#pragma once

#include <span>

#include "support/recording_driver.h"

namespace ops {

// How an op's call reaches the parts: the words of the list's column `threaded`, with what is copied told apart by the
// column `payload`. A call with an encoder of its own, or with that of the client arrays, is `own`; one that has no
// handlers is `none`.
enum class family {
  plain,
  query,
  vector,
  parameters,
  names,
  uniform,
  image,
  compressed,
  items,
  text,
  texel,
  arrays,
  app_only,
  create,
  alias,
  own,
  none
};

struct parameter {
  u32 size;  // bytes
  bool is_pointer;
  bool is_floating;
  u32 element_size;  // bytes of one of what a pointer names; 1 for void
  bool is_const;     // of a pointer: nothing is written through it
};

struct row {
  const char* name;
  int op;
  int base;  // the op whose body an alias borrows; -1 for none
  bool is_driver_op;
  bool sync;
  family threaded;
  bool first_part_answers;  // and no other part receives the call
  u32 count;                // of parameters
  std::array<parameter, driver::most_arguments> parameters;
  u32 result_size;  // bytes; 0 for void
  __osw_proc entry;
  // Calls a function of the op's type. Result: the bits of its result, 0 for none.
  u64 (*call)(__osw_proc function, const driver::argument_bits& arguments);
};

// Those in use, and those of all lists, in the forms of the mode that the process is in.
std::span<const row> all();
std::span<const row> every();
const row& of(int op);

// Whether a call of the op makes names of objects, in a mode in which those of the parts are held against the
// program's.
bool makes_names(const row& row);

// Arguments that can be told from each other, with all bits of each width in use. Pointers lead nowhere.
driver::argument_bits distinctive(const row& row);

// What the driver notes of a call of the op.
driver::call noted(const row& row, const driver::argument_bits& arguments);

// The low bytes of `bits` that a result of the op has.
u64 result_of(const row& row, u64 bits);

}  // namespace ops
