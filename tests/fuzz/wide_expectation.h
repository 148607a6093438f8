// What each context of the extended mode must have been reached by: the program's calls, as a context of its own would
// have them. Who answers, and how the parts' answers are put together, is told from what a spread program is promised.
#pragma once

#include <array>
#include <map>

#include "gl_model.h"
#include "support/library.h"

namespace fuzz {

struct wide_effect {
  effect what;
  bool first_only = false;  // of the first part
};

struct query_fact {
  GLenum target = 0;
  bool in_window = false;
  bool is_active = false;
};

// What a call must have led to, besides what the contexts were reached by.
struct outcome {
  bool knows_result = false;
  u64 result = 0;
  reply written;
  std::vector<u8> image;      // what a read of pixels leaves
  std::vector<bool> is_free;  // which of these bytes may be anything
};

struct wide_expectation {
  library::path way = library::path::threaded;
  bool mirrors = true;
  int parts = 0;
  i32 width = 0;
  i32 height = 0;
  gl_model app;
  gl_model part;
  std::vector<effect> app_effects;
  std::vector<wide_effect> part_effects;
  std::map<GLuint, query_fact> queries;
  std::map<GLuint, u8*> blocks;  // of buffers that are mapped, by name: what the program got
  std::map<u64, u64> fences;     // the program's handles, and which of its fences they are
};

void begin(wide_expectation* all, const library::process_setup& setup, const RECT& window);

bool is_threaded(const wide_expectation& all);
// Who says what the program hears.
gl_model* home(wide_expectation* all);

outcome expect_wide(wide_expectation* all, const ops::row& row, const driver::argument_bits& arguments);

// What the program has heard, as far as the expectation needs it.
void learn(wide_expectation* all, const ops::row& row, const driver::argument_bits& arguments, u64 result);

// ---- for its parts ----

void expect_copy(wide_expectation* all, int op, const driver::argument_bits& arguments);
bool copies_window(const wide_expectation& all, int op);
outcome expect_pixels(wide_expectation* all, const driver::argument_bits& arguments);
outcome expect_mapping(wide_expectation* all, int op, const driver::argument_bits& arguments);
bool is_mapping_call(int op);
buffer_object* mapped_buffer(const gl_model& model, int op, const driver::argument_bits& arguments);
outcome expect_fence_answer(const wide_expectation& all, int op, const driver::argument_bits& arguments);
outcome expect_query_answer(const wide_expectation& all, int op, const driver::argument_bits& arguments);
void note_query(wide_expectation* all, int op, const driver::argument_bits& arguments);
bool asks_query(int op);

}  // namespace fuzz
