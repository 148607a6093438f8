// The names of extensions, of which a process that is told less hears only those that it can use.
#pragma once

#include "context.h"

// The names in a string of extension names, separated by blanks, that the driver offers. The result is the host's own
// string, or lasts as long as the process. Null gives null. Any thread.
const char* offered_extensions(const char* extensions);

// Whether the host offers `name`. This one and those below are for the calling thread's context, which is current on
// the host.
bool has_extension(const char* name);

// How many of the host's indexed names are not offered under `c`, that context. They are a few hundred and the same for
// the life of a context, and counted once in it.
int withheld_extension_count(context* c);

// The host's index of an offered name. An index beyond the last offered name gives one beyond the host's last.
GLuint host_extension_index(GLuint index);
