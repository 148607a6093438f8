// What each context must receive of what the application calls: told from the design of the two paths, by function or
// family, and worked out on contexts of its own that the application's calls reach directly, before the library has
// seen them.
#pragma once

#include <array>
#include <vector>

#include "gl_context.h"
#include "support/library.h"

namespace fuzz {

constexpr int most_parts = 16;

// What becomes of the pointers of a call on the way.
enum class pointers {
  as_given,  // the application's own
  copied,    // other ones, which lead to the same bytes
  aimed,     // as copied; an array without bytes may be aimed anywhere
  zeroed     // for null: the first slot behind the parameters, which is zero
};

struct expected_event {
  event what;
  pointers become;
};

struct share {
  RECT part;  // in the application's client area, with the origin at the top left
  bool visible;
  i32 offset_x, offset_y;  // of the viewport
};

struct expectation {
  library::path way = library::path::threaded;
  bool mirrors = true;  // the application's own context follows
  int parts = 0;
  i32 client_height = 0;
  BYTE color_bits = 32;
  BYTE depth_bits = 24;
  std::array<share, most_parts> shares;
  gl_context record;  // what the library knows of the application's context
  gl_context app;
  std::array<gl_context, most_parts> part;
  std::vector<expected_event> app_events;
  std::array<std::vector<expected_event>, most_parts> part_events;
  // The block that the application has instead of the parts' buffers while one is mapped: sequential path only.
  u64 result = 0;  // of the call that was expected last
  bool knows_result = true;
};

void begin(expectation* all, const library::process_setup& setup, const RECT& window);

// Works out what the call leads to. `shadow` takes what a read of pixels writes, in the place of the application's
// memory.
void expect(expectation* all, const ops::row& row, const driver::argument_bits& arguments, u8* shadow);

// ---- for its parts ----

driver::argument_bits args(std::initializer_list<u64> values);

event expect_app(expectation* all, int op, const driver::argument_bits& arguments,
                 pointers become = pointers::as_given);
event expect_part(expectation* all, int part, int op, const driver::argument_bits& arguments,
                  pointers become = pointers::as_given);
void expect_parts(expectation* all, int op, const driver::argument_bits& arguments,
                  pointers become = pointers::as_given);
// Of the application's own context, while it follows.
void expect_mirror(expectation* all, int op, const driver::argument_bits& arguments,
                   pointers become = pointers::as_given);

// What the library asks for itself, of whoever answers queries, with a result of its own.
void expect_question(expectation* all, int op, std::initializer_list<u64> values);

void expect_threaded(expectation* all, const ops::row& travels, const driver::argument_bits& arguments);
void expect_sequential(expectation* all, const ops::row& row, const driver::argument_bits& arguments);

// Draws and glArrayElement of the threaded path.
void expect_draw(expectation* all, const ops::row& row, const driver::argument_bits& arguments);
void expect_array_element(expectation* all, const driver::argument_bits& arguments);

// A part's share of a read.
void expect_read(expectation* all, int part, const driver::argument_bits& arguments,
                 pointers become = pointers::as_given);

bool is_copy(int op);
void expect_threaded_copy(expectation* all, int op, const driver::argument_bits& arguments);
void expect_sequential_copy(expectation* all, const ops::row& row, const driver::argument_bits& arguments);

}  // namespace fuzz
