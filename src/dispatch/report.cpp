#include "dispatch/report.h"

#include <windows.h>

#include <cstdarg>
#include <cstdio>

const char* const severity_error = "OGLSPANWrapper Error";
const char* const severity_warning = "OGLSPANWrapper Warning";
const char* const severity_info = "OGLSPANWrapper Info";

void __osw_report(const char* severity, const char* format, ...) {
  char line[256];
  snprintf(line, sizeof line, "%s: ", severity);
  OutputDebugStringA(line);
  va_list arguments;
  va_start(arguments, format);
  vsnprintf(line, sizeof line, format, arguments);
  va_end(arguments);
  OutputDebugStringA(line);
}
