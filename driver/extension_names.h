// The names of extensions, without those that the driver does not offer.
#pragma once

#include "context.h"

// The names in a string of extension names, separated by blanks, that the driver offers. The result is the host's own
// string if it offers all of them, and lives as long as the process. Null gives null. Any thread.
const char* offered_extensions(const char* extensions);

// How many of the host's indexed names are not offered under `c`, the calling thread's context, which is current on the
// host. They are a few hundred and the same for the life of a context, and counted once in it.
int withheld_extension_count(context* c);
