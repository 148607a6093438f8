// The application list: executable names separated by white space.
#pragma once

#include "ops/types.h"

// Whether the list file at `path` has a word that equals `name`, without regard to case. A file that does not open for
// reading and writing counts as empty: a read-only list leaves every process bypassed. A word longer than 259
// characters matches nothing.
bool __osw_app_in_list(const char* path, const char* name);
