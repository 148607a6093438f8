// Numbers in environment variables, as the library and the driver read them.
#pragma once

#include <cstdint>
#include <cstring>

#include "ops/types.h"

// The longest text of a variable that counts, with the zero at its end, in bytes.
constexpr u32 variable_size = 64;

inline const char* skip_blanks(const char* text) {
  return text + strspn(text, " \t");
}

// Reads a decimal number of 32 bits with blanks around it at most, which a shell's "set NAME=2 & ..." leaves. Result:
// whether the text is one. Any thread.
inline bool read_decimal(const char* text, u32* number) {
  const char* c = skip_blanks(text);
  const char* const digits = c;
  u64 value = 0;
  for (; *c >= '0' && *c <= '9'; ++c) {
    value = value * 10 + static_cast<u64>(*c - '0');
    if (value > UINT32_MAX) return false;
  }
  *number = static_cast<u32>(value);
  return c != digits && !*skip_blanks(c);
}
