// Copies of arrays of strings.
#pragma once

#include "ops/types.h"

// A block of `count` addresses, of copies of the zero-terminated strings that lie behind them in it. A null string
// stays null. Null without memory, after a report that names `function`.
void* copy_strings_to_blob(GLsizei count, const GLchar* const* strings, const char* function);
