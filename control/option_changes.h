// Options that hold for a while: set, and later put back to what was there.
#pragma once

#include <vector>

#include "registry.h"

struct option_change {
  const wchar_t* name;
  uint32_t number;
  stored_value before;
  bool made;
};

// Sets every option of `*changes`, and notes what was there. All are made or, on an error, none.
LSTATUS make_changes(std::vector<option_change>* changes);

// Puts back what make_changes has changed. An option that somebody has set to another number since then stays as it is.
LSTATUS undo_changes(std::vector<option_change>* changes);
