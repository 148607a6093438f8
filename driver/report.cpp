#include "report.h"

#include <windows.h>

#include <cstdarg>
#include <cstdio>
#include <cstring>

void report(const char* format, ...) {
  char line[256] = "opengl32sys: ";
  const size_t start = strlen(line);
  va_list arguments;
  va_start(arguments, format);
  vsnprintf(line + start, sizeof line - start - 1, format, arguments);
  va_end(arguments);
  strcat(line, "\n");
  OutputDebugStringA(line);
}
