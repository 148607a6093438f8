// A stream of calls: the application makes them, one after the other, and ruins its memory behind each. From time to
// time the contexts' notes are held against what was expected.
#pragma once

#include <string>

#include "app_memory.h"
#include "expectation.h"
#include "random_source.h"
#include "wide_expectation.h"

namespace fuzz {

struct stream {
  source random;
  app_memory memory;
  bool extended = false;
  expectation expected;
  wide_expectation wide;  // in the place of the other in the extended mode
  library::rendering rendered;
  u64 calls = 0;        // made so far
  std::string failure;  // empty while everything is as it should be
};

// Starts the library and a rendering over all parts. Notes of the driver's contexts are kept from then on.
void begin(stream* run, const library::process_setup& setup);

// Makes calls until `count` have been made, the choices have ended, or something was not as it should be.
void make_calls(stream* run, u64 count);

// Brings the state that calls depend on back to what it is at first.
void reset_state(stream* run);

// Waits for the parts and compares. Result: whether all is as it should be.
bool check(stream* run);

void end(stream* run);

// ---- for its parts ----

// Makes one call, without looking for a choice.
void make_call(stream* run, const ops::row& row, const driver::argument_bits& arguments);
void make_call(stream* run, int op, std::initializer_list<u64> arguments);

// Chooses the arguments of a call and makes it, and whatever other calls it needs to be a valid one.
void choose_call(stream* run, const ops::row& row);

// Makes vertices `first` to `end` - 1 of every array that a draw now reads real ones. `sane_only`: also of those that
// no draw can capture. `beyond`: bytes behind them that have to be there too.
void prepare_arrays(stream* run, u32 first, u32 end, bool sane_only, u32 beyond);

// What the application does with its arrays' memory after a draw.
void ruin_arrays(stream* run);

}  // namespace fuzz
