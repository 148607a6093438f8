// The names of extensions, of which a program is told only those whose functions it can have.
#pragma once

#include "dispatch/thread_state.h"

// Whether the extended mode offers the extension of this name, which is `length` characters long.
bool is_offered(const char* name, size_t length);

// The names in a string of extension names, separated by blanks, that are offered. The result lasts as long as the
// process. Null gives null. Any thread.
const char* offered_names(const char* names);

// How many of the names that the system numbers are not offered. This and the next are for the calling thread's own
// context, which is current.
GLint withheld_name_count(const __osw_thread_state* state);

// The system's number of an offered name. A number beyond the last offered name gives one beyond the system's last.
GLuint system_name_index(const __osw_thread_state* state, GLuint index);
