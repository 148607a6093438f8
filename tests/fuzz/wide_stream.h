// A stream in the extended mode: the driver's contexts are models of GL, which are held against those that the
// program's calls have reached directly.
#pragma once

#include "stream.h"

namespace fuzz {

void watch_wide(stream* run);
void make_wide_call(stream* run, const ops::row& row, const driver::argument_bits& arguments);
// With the parts waiting. Result: what differs, or nothing.
std::string compare_wide(stream* run);

// Chooses a call, or several that belong together, and makes them. `may_wait`: also such as the program waits for.
void choose_wide_call(stream* run, bool may_wait);

// ---- subjects of choices; result: whether a call was made ----

void choose_objects(stream* run);
void choose_draw(stream* run);
void choose_mapping(stream* run);
void choose_fence(stream* run, bool may_wait);
void choose_query(stream* run, bool may_wait);
void choose_pixels(stream* run);

// ---- for them ----

// By any of the names of the function.
void call(stream* run, int op, std::initializer_list<u64> arguments);
// A buffer or array object that there is, or 0.
GLuint any_buffer(stream* run);
GLuint any_vao(stream* run);
GLuint any_unmapped_buffer(stream* run);
u64 bits_of_number(i32 value);
void unmap_all(stream* run);

}  // namespace fuzz
