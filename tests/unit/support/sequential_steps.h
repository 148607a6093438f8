// What a call on the sequential path comes down to: switches of context and calls, in order, all on the application's
// own thread.
#pragma once

#include <initializer_list>
#include <iosfwd>

#include "support/library.h"

namespace sequential {

// Starts the library with `setup` on the sequential path, and a rendering in it.
library::rendering start(library::process_setup setup = {});

struct step {
  HGLRC context;  // in which it was made; null for a switch
  driver::call what;
};
bool operator==(const step& first, const step& second);
std::ostream& operator<<(std::ostream& out, const step& shown);

step switch_to(HGLRC context);

// The steps since the last driver::clear_calls. Every one of the library's driver calls is among them.
std::vector<step> steps();

// The same with 0 for the last argument of these GL ops: an address that is the library's own.
std::vector<step> steps_without_addresses(std::initializer_list<int> ops);

// The GL calls among them that were made in one context.
std::vector<driver::call> calls_in(HGLRC context);

// For each part a switch and `calls`, then the switch back.
std::vector<step> on_each_part(const library::rendering& rendered, const std::vector<driver::call>& calls);

// A switch to the first part, `calls`, and the switch back.
std::vector<step> on_first_part(const library::rendering& rendered, const std::vector<driver::call>& calls);

void append(std::vector<step>* steps, const std::vector<step>& more);

}  // namespace sequential
