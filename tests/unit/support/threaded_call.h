// One call of any op on the threaded path, ready to be made: its arguments, the application's memory that they point
// at, and what has to become of it.
#pragma once

#include <list>

#include "support/op_rows.h"
#include "support/received.h"

namespace threaded {

// Memory that the parts have to find behind a pointer, as it was at the time of the application's call.
struct payload {
  u32 argument;
  std::vector<u8> bytes;
  u32 record_slot;  // where in the record the copy lies; 0 for a heap block that the record's mask names
};

struct prepared_call {
  const ops::row* entered;  // the application calls this
  const ops::row* travels;  // this reaches the contexts
  driver::argument_bits arguments;
  driver::argument_bits mirrored_arguments;
  const ops::row* mirrored_as;  // the call that the application's own context receives
  std::list<std::vector<u8>> memory;
  std::vector<payload> payloads;
  bool is_mirrored = true;           // reaches the application's own context with the option on
  bool reaches_parts_always = true;  // else only with the option off
  bool is_for_app_alone = false;     // never reaches the parts
  bool changes_on_the_way = false;   // the parts do not receive the call as it was made
  bool is_for_first_part = false;    // the others receive nothing
};

// The call of `row`, by what the op that travels reads. Fails the test where call_shapes.h does not know that.
prepared_call prepare(const ops::row& row);

// Makes an argument point at `bytes` of memory of its own, whose end is the end of a heap block.
std::vector<u8>& point_at_memory(prepared_call* call, u32 argument, std::size_t bytes);

}  // namespace threaded
