// Other names of functions that are ops, by which a program of the extended mode finds them too.
#pragma once

// The op that `name` is another name of, in all of the lists; -1 for a name that is none. Any thread, no lock needed.
int find_aliased_op(const char* name);
