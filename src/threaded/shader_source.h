// The source strings of a shader, joined into one.
#pragma once

#include "ops/types.h"

// Bytes of all strings together and a terminator. `lengths` may be null; a negative length means a zero-terminated
// string.
u64 __osw_shader_source_size(GLsizei count, const GLchar* const* strings, const GLint* lengths);

// Joins the strings in `joined`, which is zeroed and as large as the size says. A null string is passed over, and a
// string that ends before its length is taken up to its end.
void __osw_shader_source_join(GLchar* joined, GLsizei count, const GLchar* const* strings, const GLint* lengths);
